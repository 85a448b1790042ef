#include "Platform/Foundation/URLSession.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/UUID.h"
#include "Platform/macOS/Conversions.h"

#include <dispatch/dispatch.h>

namespace macOS {

namespace {

NSURLRequest* toNSURLRequest(const URLRequest& request) {
    return [NSURLRequest requestWithURL:object<NSURL>(request.url)
                            cachePolicy:static_cast<NSURLRequestCachePolicy>(request.cachePolicy)
                        timeoutInterval:request.timeoutInterval];
}

std::optional<HTTPURLResponse> toHTTPURLResponse(NSURLResponse* response) {
    if (![response isKindOfClass:[NSHTTPURLResponse class]]) {
        return std::nullopt;
    }
    return HTTPURLResponse{.statusCode = [static_cast<NSHTTPURLResponse*>(response) statusCode]};
}

std::optional<URLSessionData> dataAnswer(NSData* data, NSURLResponse* response, NSError* error) {
    if (error) {
        return std::nullopt;
    }
    return URLSessionData{.data = toBytes(data), .response = toHTTPURLResponse(response)};
}

// The session deletes its file as soon as the handler returns.
std::optional<URLSessionDownload> downloadAnswer(NSURL* location, NSURLResponse* response, NSError* error) {
    if (error) {
        return std::nullopt;
    }
    const auto fileManager = FileManager::defaultManager();
    const auto name = UUID::init().UUIDString();
    const auto kept = fileManager.temporaryDirectory().URLByAppendingPathComponent(name);
    if (!fileManager.moveItemAtURL(handle<URL>(location), kept)) {
        return std::nullopt;
    }
    return URLSessionDownload{.location = kept, .response = toHTTPURLResponse(response)};
}

void resumeAndWait(NSURLSessionTask* task, dispatch_semaphore_t ended) {
    [task resume];
    dispatch_semaphore_wait(ended, DISPATCH_TIME_FOREVER);
}

} // namespace

} // namespace macOS

namespace NS {

using namespace macOS;

static_assert(static_cast<NSUInteger>(URLRequestCachePolicy::UseProtocolCachePolicy) ==
              NSURLRequestUseProtocolCachePolicy);
static_assert(static_cast<NSUInteger>(URLRequestCachePolicy::ReloadIgnoringLocalCacheData) ==
              NSURLRequestReloadIgnoringLocalCacheData);

URLSession URLSession::sharedSession() {
    return handle<URLSession>([NSURLSession sharedSession]);
}

std::optional<URLSessionData> URLSession::dataForRequest(const URLRequest& request) const {
    __block std::optional<URLSessionData> answer;
    dispatch_semaphore_t ended = dispatch_semaphore_create(0);
    resumeAndWait([object<NSURLSession>(*this)
                      dataTaskWithRequest:toNSURLRequest(request)
                        completionHandler:^(NSData* data, NSURLResponse* response, NSError* error) {
                            answer = enter(dataAnswer, data, response, error);
                            dispatch_semaphore_signal(ended);
                        }],
                  ended);
    return std::move(answer);
}

std::optional<URLSessionDownload> URLSession::downloadForRequest(const URLRequest& request) const {
    __block std::optional<URLSessionDownload> answer;
    dispatch_semaphore_t ended = dispatch_semaphore_create(0);
    resumeAndWait([object<NSURLSession>(*this)
                      downloadTaskWithRequest:toNSURLRequest(request)
                            completionHandler:^(NSURL* location, NSURLResponse* response, NSError* error) {
                                answer = enter(downloadAnswer, location, response, error);
                                dispatch_semaphore_signal(ended);
                            }],
                  ended);
    return std::move(answer);
}

} // namespace NS
