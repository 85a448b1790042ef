#include "Platform/Foundation/URLSession.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Foundation/Spawn.h"
#include "Platform/Linux/Foundation/TemporaryFiles.h"
#include "Platform/Linux/Foundation/Transfers.h"
#include "Platform/Linux/Foundation/URLNative.h"
#include "Platform/Linux/Logging.h"
#include "Platform/Linux/Transfer/Protocol.h"
#include "Platform/NoDestructor.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <new>
#include <poll.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace Linux {

namespace {

constexpr int cancellationTimeout = 200; // milliseconds

std::atomic<bool> cancelled = false;

/// Takes the next piece of a body, and says whether it could.
using Sink = std::function<bool(std::string_view)>;

/// A file in memory with this text, to be read from its start.
Descriptor memoryFile(std::string_view text) {
    Descriptor file(memfd_create("transfer", MFD_CLOEXEC));
    const bool isWritten = !writeAll(file.number(), text) && lseek(file.number(), 0, SEEK_SET) == 0;
    return isWritten ? std::move(file) : Descriptor();
}

/// The process that makes one transfer.
class TransferProcess {
public:
    explicit TransferProcess(const URLRequest& request)
        : request_(
              memoryFile(TransferProtocol::textOfRequest({request.url.absoluteString(), request.timeoutInterval}))),
          status_(memoryFile("")) {}
    ~TransferProcess() {
        if (child_) {
            kill(*child_, SIGKILL);
            waitForEnd();
        }
    }
    TransferProcess(const TransferProcess&) = delete;
    TransferProcess& operator=(const TransferProcess&) = delete;

    /// The head of the answer when its body has come whole.
    std::optional<HTTPURLResponse> run(const Sink& sink) {
        if (!request_ || !status_ || !start() || !receive(sink) || !waitForEnd()) {
            return std::nullopt;
        }
        char text[16] = {};
        const bool isRead = pread(status_.number(), text, sizeof text - 1, 0) > 0;
        return isRead ? std::optional(HTTPURLResponse{.statusCode = std::atol(text)}) : std::nullopt;
    }

private:
    bool start() {
        Pipe body(O_CLOEXEC);
        if (!body.readEnd) {
            return false;
        }
        body_ = std::move(body.readEnd);
        std::vector<int> descriptors(TransferProtocol::statusDescriptor + 1, -1);
        descriptors[TransferProtocol::requestDescriptor] = request_.number();
        descriptors[TransferProtocol::bodyDescriptor] = body.writeEnd.number();
        descriptors[TransferProtocol::statusDescriptor] = status_.number();
        const auto folder = native(Bundle::mainBundle()).executable.parent_path();
        child_ = spawn(folder / TransferProtocol::programName, {}, descriptors);
        return child_.has_value();
    }

    bool receive(const Sink& sink) const {
        std::vector<char> piece(std::size_t{64} << 10);
        while (!cancelled) {
            pollfd readable = {.fd = body_.number(), .events = POLLIN, .revents = 0};
            if (poll(&readable, 1, cancellationTimeout) <= 0) {
                continue;
            }
            const ssize_t count = read(readable.fd, piece.data(), piece.size());
            if (count == 0) {
                return true;
            }
            if (count < 0 || !sink({piece.data(), static_cast<std::size_t>(count)})) {
                return false;
            }
        }
        return false;
    }

    /// Whether the answer came whole.
    bool waitForEnd() {
        const int status = waitFor(*child_);
        child_.reset();
        return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
    }

    const Descriptor request_;
    const Descriptor status_;
    Descriptor body_;
    std::optional<pid_t> child_;
};

/// A new file that only the user can read, removed again unless it is kept.
class TemporaryFile {
public:
    TemporaryFile()
        : path_(FileManager::defaultManager().temporaryDirectory().path() + "/" + TemporaryFiles::downloadPrefix +
                "XXXXXX"),
          descriptor_(mkostemp(path_.data(), O_CLOEXEC)) {}
    ~TemporaryFile() {
        if (descriptor_) {
            unlink(path_.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    explicit operator bool() const { return bool(descriptor_); }

    bool write(std::string_view bytes) { return !writeAll(descriptor_.number(), bytes); }

    /// Absent when what was written has not reached the file.
    std::optional<URL> keep() {
        if (!descriptor_.close()) {
            unlink(path_.c_str());
            return std::nullopt;
        }
        return URL::fileURLWithPath(path_);
    }

private:
    std::string path_;
    Descriptor descriptor_;
};

std::optional<HTTPURLResponse> responseTo(const URLRequest& request, const Sink& sink) {
    // libcurl would take the first name of the path for the host.
    if (!request.url || native(request.url).parts.host().empty() || cancelled) {
        return std::nullopt;
    }
    try {
        qCDebug(transferLog) << "begin" << request.url.absoluteString().c_str();
        auto response = TransferProcess(request).run(sink);
        if (response) {
            qCDebug(transferLog) << "status" << response->statusCode;
        } else {
            qCDebug(transferLog) << "failed";
        }
        return response;
    } catch (const std::bad_alloc&) { // a body larger than the memory
        return std::nullopt;
    }
}

} // namespace

void cancelTransfers() {
    cancelled = true;
}

} // namespace Linux

namespace NS {

using namespace Linux;

URLSession URLSession::sharedSession() {
    static NoDestructor<URLSession> session(handle<URLSession>(std::make_shared<Native>()));
    return *session;
}

std::optional<URLSessionData> URLSession::dataForRequest(const URLRequest& request) const {
    URLSessionData answer;
    answer.response = responseTo(request, [&](std::string_view bytes) {
        answer.data += bytes;
        return true;
    });
    return answer.response ? std::optional(std::move(answer)) : std::nullopt;
}

std::optional<URLSessionDownload> URLSession::downloadForRequest(const URLRequest& request) const {
    TemporaryFile file;
    const auto response =
        file ? responseTo(request, [&](std::string_view bytes) { return file.write(bytes); }) : std::nullopt;
    const auto location = response ? file.keep() : std::nullopt;
    return location ? std::optional(URLSessionDownload{*location, response}) : std::nullopt;
}

} // namespace NS
