#include "Platform/Foundation/URLSession.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/UUID.h"
#include "Platform/macOS/Conversions.h"

#include <dispatch/dispatch.h>

namespace macOS {

namespace {

// Without cookies, which the shared session would keep, and give back the next day.
NSURLRequest* toNSURLRequest(const URLRequest& request) {
    NSMutableURLRequest* result =
        [NSMutableURLRequest requestWithURL:object<NSURL>(request.url)
                                cachePolicy:static_cast<NSURLRequestCachePolicy>(request.cachePolicy)
                            timeoutInterval:request.timeoutInterval];
    [result setHTTPShouldHandleCookies:NO];
    return result;
}

bool isEncrypted(NSURL* url) {
    return [[[url scheme] lowercaseString] isEqualToString:@"https"];
}

// The system refuses a redirect from HTTPS to plain HTTP, but not to an IP address, since the exception for local
// servers holds for all of those.
bool hasLostEncryption(const URL& asked, NSURLResponse* response) {
    return isEncrypted(object<NSURL>(asked)) && !isEncrypted([response URL]);
}

std::optional<HTTPURLResponse> toHTTPURLResponse(NSURLResponse* response) {
    if (![response isKindOfClass:[NSHTTPURLResponse class]]) {
        return std::nullopt;
    }
    return HTTPURLResponse{.statusCode = [static_cast<NSHTTPURLResponse*>(response) statusCode]};
}

std::optional<URLSessionData> dataAnswer(const URL& asked, NSData* data, NSURLResponse* response, NSError* error) {
    if (error || hasLostEncryption(asked, response)) {
        return std::nullopt;
    }
    return URLSessionData{.data = toBytes(data), .response = toHTTPURLResponse(response)};
}

// The session deletes its file as soon as the handler returns.
std::optional<URLSessionDownload> downloadAnswer(const URL& asked, NSURL* location, NSURLResponse* response,
                                                 NSError* error) {
    if (error || !location || hasLostEncryption(asked, response)) {
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
    const URL asked = request.url; // in the block by value
    dispatch_semaphore_t ended = dispatch_semaphore_create(0);
    resumeAndWait([object<NSURLSession>(*this)
                      dataTaskWithRequest:toNSURLRequest(request)
                        completionHandler:^(NSData* data, NSURLResponse* response, NSError* error) {
                            answer = enter(dataAnswer, asked, data, response, error);
                            dispatch_semaphore_signal(ended);
                        }],
                  ended);
    return std::move(answer);
}

std::optional<URLSessionDownload> URLSession::downloadForRequest(const URLRequest& request) const {
    __block std::optional<URLSessionDownload> answer;
    const URL asked = request.url; // in the block by value
    dispatch_semaphore_t ended = dispatch_semaphore_create(0);
    resumeAndWait([object<NSURLSession>(*this)
                      downloadTaskWithRequest:toNSURLRequest(request)
                            completionHandler:^(NSURL* location, NSURLResponse* response, NSError* error) {
                                answer = enter(downloadAnswer, asked, location, response, error);
                                dispatch_semaphore_signal(ended);
                            }],
                  ended);
    return std::move(answer);
}

} // namespace NS
