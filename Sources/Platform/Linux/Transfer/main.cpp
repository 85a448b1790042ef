// One transfer, in a process of its own: libcurl brings some thirty libraries with it, which would stay in the memory
// of a program that otherwise only waits.

#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Transfer/Protocol.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <curl/curl.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <strings.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

namespace Protocol = Linux::TransferProtocol;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr long maxRedirects = 20;

std::optional<Protocol::Request> readRequest() {
    std::string text;
    const auto error = Linux::readAll(Protocol::requestDescriptor, text);
    return error ? std::nullopt : Protocol::requestOfText(text);
}

class CurlTransfer {
public:
    explicit CurlTransfer(const Protocol::Request& request) : timeout_(request.timeout) { configure(request.address); }
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// The status of the answer when its body has come whole.
    std::optional<long> run() {
        if (!isConfigured_ || curl_multi_add_handle(multi_.get(), easy_.get()) != CURLM_OK || !perform()) {
            return std::nullopt;
        }
        long status = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
        return status;
    }

private:
    void configure(const std::string& address) {
        isConfigured_ = easy_ && multi_;
        set(CURLOPT_URL, address.c_str());
        set(CURLOPT_PATH_AS_IS, 1L);
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_MAXREDIRS, maxRedirects);
        set(CURLOPT_PREREQFUNCTION, &CurlTransfer::willRequest);
        set(CURLOPT_PREREQDATA, this);
        set(CURLOPT_HEADERFUNCTION, &CurlTransfer::didReceiveLine);
        set(CURLOPT_HEADERDATA, this);
        set(CURLOPT_WRITEFUNCTION, &CurlTransfer::didReceive);
        // libcurl halves it while there are more addresses to try.
        set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeout_ / 1ms));
        // libcurl leaves it to its users to heed these.
        setFromEnvironment(CURLOPT_CAINFO, "SSL_CERT_FILE");
        setFromEnvironment(CURLOPT_CAPATH, "SSL_CERT_DIR");
    }

    template <class Value>
    void set(CURLoption option, Value value) {
        isConfigured_ = isConfigured_ && curl_easy_setopt(easy_.get(), option, value) == CURLE_OK;
    }

    void setFromEnvironment(CURLoption option, const char* variable) {
        if (const char* value = std::getenv(variable); value && *value) {
            set(option, value);
        }
    }

    /// Whether the answer came whole. Only silence for the length of the timeout ends a transfer before that.
    bool perform() {
        auto deadline = Clock::now() + timeout_;
        int running = 1;
        while (curl_multi_perform(multi_.get(), &running) == CURLM_OK && running > 0) {
            int active = 0;
            const auto left = std::clamp<std::chrono::duration<double>>(deadline - Clock::now(), 0ms, 1s);
            curl_multi_poll(multi_.get(), nullptr, 0,
                            static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count()), &active);
            const auto now = Clock::now();
            if (active > 0) {
                deadline = now + timeout_;
            } else if (now >= deadline) {
                return false;
            }
        }
        int others = 0;
        const auto* message = curl_multi_info_read(multi_.get(), &others);
        return message && message->msg == CURLMSG_DONE && message->data.result == CURLE_OK && isHeadWhole_;
    }

    /// Before each request: once one was encrypted, so are all that it is redirected to.
    static int willRequest(void* transfer, char*, char*, int, int) {
        auto& self = *static_cast<CurlTransfer*>(transfer);
        const char* scheme = nullptr;
        curl_easy_getinfo(self.easy_.get(), CURLINFO_SCHEME, &scheme);
        if (scheme && strcasecmp(scheme, "https") == 0) {
            self.set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
        }
        return self.isConfigured_ ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
    }

    /// libcurl takes an answer that ends within its head for one with an empty body.
    static std::size_t didReceiveLine(const char* bytes, std::size_t, std::size_t count, void* transfer) {
        auto& self = *static_cast<CurlTransfer*>(transfer);
        const std::string_view line(bytes, count);
        const bool isFirst = line.starts_with("HTTP/");
        const bool isLast = line == "\r\n" || line == "\n";
        self.isHeadWhole_ = isLast || (self.isHeadWhole_ && !isFirst); // a trailer may follow the body
        return count;
    }

    static std::size_t didReceive(const char* bytes, std::size_t, std::size_t count, void*) {
        return Linux::writeAll(Protocol::bodyDescriptor, {bytes, count}) ? 0 : count;
    }

    const std::chrono::duration<double> timeout_;
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy_{curl_easy_init(), curl_easy_cleanup};
    const std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi_{curl_multi_init(), curl_multi_cleanup};
    bool isConfigured_ = false;
    bool isHeadWhole_ = false;
};

} // namespace

int main() {
    prctl(PR_SET_PDEATHSIG, SIGKILL); // without its parent nobody reads the answer
    const auto request = readRequest();
    if (!request || curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
        return EXIT_FAILURE;
    }
    const auto status = CurlTransfer(*request).run();
    const bool isAnswered = status && !Linux::writeAll(Protocol::statusDescriptor, std::to_string(*status));
    std::_Exit(isAnswered ? EXIT_SUCCESS : EXIT_FAILURE); // without waiting for a name server that does not answer
}
