#include "Platform/Foundation/URLSession.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Foundation/Spawn.h"
#include "Platform/Linux/Foundation/Transfers.h"
#include "Platform/Linux/Foundation/URLNative.h"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <iterator>
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

constexpr int cancellationLatency = 200; // milliseconds

std::atomic<bool> cancelled = false;

/// Takes the next piece of a body, and says whether it could.
using Sink = std::function<bool(std::string_view)>;

/// The program that makes the transfer.
std::string transferProgram() {
    return native(Bundle::mainBundle()).executable.parent_path() / "Transfer";
}

/// What the program reads as its request, or writes its status to. In memory.
Descriptor makeNote(std::string_view text) {
    Descriptor note(memfd_create("note", MFD_CLOEXEC));
    const bool isWritten = !writeAll(note.number(), text) && lseek(note.number(), 0, SEEK_SET) == 0;
    return isWritten ? std::move(note) : Descriptor();
}

std::string textOf(const URLRequest& request) {
    char seconds[32] = {};
    std::to_chars(std::begin(seconds), std::end(seconds), request.timeoutInterval);
    return request.url.absoluteString() + "\n" + seconds;
}

/// One transfer under way.
class Transfer {
public:
    explicit Transfer(const URLRequest& request) : request_(makeNote(textOf(request))), status_(makeNote("")) {}
    ~Transfer() {
        if (child_) {
            kill(*child_, SIGKILL);
            waitForEnd();
        }
    }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

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
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            return false;
        }
        body_.emplace(ends[0]);
        const Descriptor childsEnd(ends[1]);
        child_ = spawn(transferProgram(), {}, {request_.number(), childsEnd.number(), -1, status_.number()});
        return child_.has_value();
    }

    bool receive(const Sink& sink) const {
        std::vector<char> piece(std::size_t{64} << 10);
        while (!cancelled) {
            pollfd readable = {.fd = body_->number(), .events = POLLIN, .revents = 0};
            if (poll(&readable, 1, cancellationLatency) <= 0) {
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

    /// Whether the program says that all went well.
    bool waitForEnd() {
        int status = 0;
        while (waitpid(*child_, &status, 0) < 0 && errno == EINTR) {
        }
        child_.reset();
        return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
    }

    const Descriptor request_;
    const Descriptor status_;
    std::optional<Descriptor> body_;
    std::optional<pid_t> child_;
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

    bool write(std::string_view bytes) { return !writeAll(descriptor_, bytes); }

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

std::optional<HTTPURLResponse> transfer(const URLRequest& request, const Sink& sink) {
    // libcurl would take the first name of the path for the host.
    if (!request.url || native(request.url).parts.host().empty() || cancelled) {
        return std::nullopt;
    }
    try {
        return Transfer(request).run(sink);
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
    static const auto& session = *new URLSession(handle<URLSession>(std::make_shared<Native>()));
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
