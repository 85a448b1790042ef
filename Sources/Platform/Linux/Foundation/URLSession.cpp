#include "Platform/Foundation/URLSession.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Linux/Foundation/Curl.h"
#include "Platform/Linux/Foundation/URLNative.h"
#include "Platform/Linux/Foundation/URLSessionNative.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <string_view>
#include <strings.h>
#include <unistd.h>
#include <utility>

namespace NS {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr long mostRedirects = 20;
constexpr auto cancellationLatency = 200ms;

std::atomic<bool> cancelled = false;

/// Takes the next piece of a body, and says whether it could.
using Sink = std::function<bool(std::string_view)>;

/// One request and its answer.
class Transfer {
public:
    Transfer(const Curl& curl, const URLRequest& request, Sink sink)
        : curl_(curl), sink_(std::move(sink)), patience_(request.timeoutInterval),
          easy_(curl.easyInit(), curl.easyCleanup), multi_(curl.multiInit(), curl.multiCleanup) {
        configure(request);
    }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// The head of the answer when its body has come whole.
    std::optional<HTTPURLResponse> run() {
        if (!isConfigured_ || curl_.multiAddHandle(multi_.get(), easy_.get()) != CURLM_OK) {
            return std::nullopt;
        }
        const bool succeeded = perform();
        if (cancelled) {
            set(CURLOPT_QUICK_EXIT, 1L); // the name servers' answer may be long in coming
        }
        HTTPURLResponse response;
        curl_.easyGetinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &response.statusCode);
        curl_.multiRemoveHandle(multi_.get(), easy_.get());
        return succeeded ? std::optional(response) : std::nullopt;
    }

private:
    using Easy = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
    using Multi = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;

    void configure(const URLRequest& request) {
        isConfigured_ = easy_ && multi_;
        set(CURLOPT_URL, request.URL.absoluteString().c_str());
        set(CURLOPT_PATH_AS_IS, 1L);
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_MAXREDIRS, mostRedirects);
        set(CURLOPT_PREREQFUNCTION, &Transfer::willRequest);
        set(CURLOPT_PREREQDATA, this);
        set(CURLOPT_HEADERFUNCTION, &Transfer::didReceiveLine);
        set(CURLOPT_HEADERDATA, this);
        set(CURLOPT_WRITEFUNCTION, &Transfer::didReceive);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_CONNECTTIMEOUT_MS,
            static_cast<long>(patience_ / 1ms)); // halved, if there are more addresses to try
        // libcurl leaves it to its users to heed these.
        setFromEnvironment(CURLOPT_CAINFO, "SSL_CERT_FILE");
        setFromEnvironment(CURLOPT_CAPATH, "SSL_CERT_DIR");
    }

    template <class Value>
    void set(CURLoption option, Value value) {
        isConfigured_ = isConfigured_ && curl_.easySetopt(easy_.get(), option, value) == CURLE_OK;
    }

    void setFromEnvironment(CURLoption option, const char* variable) {
        if (const char* value = std::getenv(variable); value && *value) {
            set(option, value);
        }
    }

    /// Whether all went well, however long it took. What ends it is silence.
    bool perform() {
        auto deadline = Clock::now() + patience_;
        int running = 1;
        while (curl_.multiPerform(multi_.get(), &running) == CURLM_OK && running > 0 && !cancelled) {
            int active = 0;
            const auto left =
                std::clamp<std::chrono::duration<double>>(deadline - Clock::now(), 0ms, cancellationLatency);
            curl_.multiPoll(multi_.get(), nullptr, 0,
                            static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count()), &active);
            const auto now = Clock::now();
            if (active > 0) {
                deadline = now + patience_;
            } else if (now >= deadline) {
                return false;
            }
        }
        int others = 0;
        const auto* message = curl_.multiInfoRead(multi_.get(), &others);
        return message && message->msg == CURLMSG_DONE && message->data.result == CURLE_OK && isHeadWhole_;
    }

    /// Before each request: once one was encrypted, so are all that it is redirected to.
    static int willRequest(void* transfer, char*, char*, int, int) {
        auto& self = *static_cast<Transfer*>(transfer);
        const char* scheme = nullptr;
        self.curl_.easyGetinfo(self.easy_.get(), CURLINFO_SCHEME, &scheme);
        if (scheme && strcasecmp(scheme, "https") == 0) {
            self.set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
        }
        return self.isConfigured_ ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
    }

    /// libcurl takes an answer that ends within its head for one with an empty body.
    static std::size_t didReceiveLine(const char* bytes, std::size_t, std::size_t count, void* transfer) {
        auto& self = *static_cast<Transfer*>(transfer);
        const std::string_view line(bytes, count);
        const bool isFirst = line.starts_with("HTTP/");
        const bool isLast = line == "\r\n" || line == "\n";
        self.isHeadWhole_ = isLast || (self.isHeadWhole_ && !isFirst); // what follows the last is the body's trailer
        return count;
    }

    static std::size_t didReceive(const char* bytes, std::size_t, std::size_t count, void* transfer) {
        try {
            return static_cast<Transfer*>(transfer)->sink_({bytes, count}) ? count : 0;
        } catch (const std::exception&) { // no memory for it
            return 0;
        }
    }

    const Curl& curl_;
    const Sink sink_;
    const std::chrono::duration<double> patience_;
    const Easy easy_;
    const Multi multi_;
    bool isConfigured_ = false;
    bool isHeadWhole_ = false;
};

/// A new file for the user alone, which goes away again unless it is kept.
class TemporaryFile {
public:
    TemporaryFile()
        : path_(FileManager::defaultManager().temporaryDirectory().path() + "/download-XXXXXX"),
          descriptor_(mkostemp(path_.data(), O_CLOEXEC)) {}
    ~TemporaryFile() {
        if (descriptor_ >= 0) {
            close(descriptor_);
            unlink(path_.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    explicit operator bool() const { return descriptor_ >= 0; }

    bool write(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
            if (count >= 0) {
                bytes.remove_prefix(static_cast<std::size_t>(count));
            } else if (errno != EINTR) {
                return false;
            }
        }
        return true;
    }

    /// Nothing when what was written does not reach the file after all.
    std::optional<URL> keep() {
        if (close(std::exchange(descriptor_, -1)) != 0) {
            unlink(path_.c_str());
            return std::nullopt;
        }
        return URL::fileURLWithPath(path_);
    }

private:
    std::string path_;
    int descriptor_;
};

std::optional<HTTPURLResponse> transfer(const URLRequest& request, Sink sink) {
    // libcurl would take the first name of the path for the host.
    if (!request.URL || Bridge::native<URLNative>(request.URL).parts.host().empty() || cancelled) {
        return std::nullopt;
    }
    const auto* library = curl();
    return library ? Transfer(*library, request, std::move(sink)).run() : std::nullopt;
}

} // namespace

void cancelTransfers() {
    cancelled = true;
}

URLSession URLSession::sharedSession() {
    static const auto& session = *new URLSession(Bridge::handle<URLSession>(std::make_shared<Native>()));
    return session;
}

std::optional<URLSessionData> URLSession::dataForRequest(const URLRequest& request) const {
    URLSessionData answer;
    answer.response = transfer(request, [&](std::string_view bytes) {
        answer.data += bytes;
        return true;
    });
    return answer.response ? std::optional(std::move(answer)) : std::nullopt;
}

std::optional<URLSessionDownload> URLSession::downloadForRequest(const URLRequest& request) const {
    TemporaryFile file;
    const auto response =
        file ? transfer(request, [&](std::string_view bytes) { return file.write(bytes); }) : std::nullopt;
    const auto location = response ? file.keep() : std::nullopt;
    return location ? std::optional(URLSessionDownload{*location, response}) : std::nullopt;
}

} // namespace NS
