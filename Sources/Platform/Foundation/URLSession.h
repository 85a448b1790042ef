#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/URL.h"

#include <optional>
#include <string>

namespace NS {

enum class URLRequestCachePolicy : unsigned long { UseProtocolCachePolicy = 0, ReloadIgnoringLocalCacheData = 1 };

/// What is asked of a server (NSURLRequest).
struct URLRequest {
    URL url;
    URLRequestCachePolicy cachePolicy = URLRequestCachePolicy::UseProtocolCachePolicy;
    /// Seconds without a single byte after which the transfer fails. However long it takes as a whole, it may.
    double timeoutInterval = 60;
};

/// The head of a server's answer (NSHTTPURLResponse).
struct HTTPURLResponse {
    long statusCode = 0;
};

/// A whole answer. No response: it did not come over HTTP.
struct URLSessionData {
    std::string data;
    std::optional<HTTPURLResponse> response;
};

/// A whole answer, its body in a file that the caller owns.
struct URLSessionDownload {
    URL location;
    std::optional<HTTPURLResponse> response;
};

/// Transfers (NSURLSession), without cookies. They follow redirects; what was asked for over HTTPS and came over plain
/// HTTP is no answer. Safe from any thread; the transfers themselves block the calling one, which must not be the main
/// thread.
class URLSession : public Object {
public:
    static URLSession sharedSession();

    /// Waits for the whole answer, whatever its status. Nothing when the transfer fails.
    std::optional<URLSessionData> dataForRequest(const URLRequest& request) const;
    std::optional<URLSessionDownload> downloadForRequest(const URLRequest& request) const;

    using Object::Object;
};

} // namespace NS
