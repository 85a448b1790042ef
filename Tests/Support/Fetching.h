#pragma once

#include "Platform/Foundation/URLSession.h"
#include "Support/Files.h"
#include "Support/HTTPServer.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

/// Transfers of the unit tests.
namespace Fetching {

using Pieces = std::vector<Seam::HTTPServer::Piece>;

inline NS::URLRequest request(const std::string& url, double timeout = 10) {
    return {NS::URL::URLWithString(url), NS::URLRequestCachePolicy::UseProtocolCachePolicy, timeout};
}

inline std::optional<NS::URLSessionData> fetch(const std::string& url, double timeout = 10) {
    return NS::URLSession::sharedSession().dataForRequest(request(url, timeout));
}

inline std::optional<NS::URLSessionDownload> download(const std::string& url, double timeout = 10) {
    return NS::URLSession::sharedSession().downloadForRequest(request(url, timeout));
}

/// The body that comes with status 200, or what came instead.
inline std::string body(const std::string& url, double timeout = 10) {
    const auto answer = fetch(url, timeout);
    if (!answer || !answer->response) {
        return "failure";
    }
    const auto status = answer->response->statusCode;
    return status == 200 ? answer->data : "status " + std::to_string(status);
}

/// The files of two downloads of these bytes; fewer where one fails.
inline std::vector<std::string> filesOfTwoDownloads(Seam::HTTPServer& server, const std::string& bytes) {
    server.answer("/x", {200, bytes, {}});
    std::vector<std::string> files;
    for (int number = 0; number < 2; ++number) {
        if (const auto file = download(server.url("/x"))) {
            files.push_back(file->location.path());
        }
    }
    return files;
}

template <class Action>
std::chrono::duration<double> durationOf(Action action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::steady_clock::now() - start;
}

} // namespace Fetching
