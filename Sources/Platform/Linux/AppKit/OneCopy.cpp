#include "Platform/Linux/AppKit/OneCopy.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace Linux {

namespace {

using namespace std::chrono_literals;

constexpr auto longestWait = 2s; // for a copy that has the lock and does not listen yet, or no more

/// The folder of the account's session, or else of its settings: nobody else's in either case.
std::filesystem::path runtimeFolder() {
    const char* const session = std::getenv("XDG_RUNTIME_DIR");
    const std::filesystem::path folder = session && *session == '/' ? session : configFolder();
    makeFolders(folder);
    return folder;
}

/// Nothing for a path that is too long for a socket.
std::optional<sockaddr_un> addressOf(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof address.sun_path) {
        return std::nullopt;
    }
    std::memcpy(address.sun_path, path.c_str(), path.native().size());
    return address;
}

const sockaddr* generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

Descriptor datagramSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

} // namespace

OneCopy::OneCopy(const std::string& identifier, std::function<void()> startedAgain)
    : socketPath_(runtimeFolder() / (identifier + ".socket")), startedAgain_(std::move(startedAgain)) {
    auto lockPath = socketPath_;
    lockPath.replace_extension(".lock");
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (!lock(lockPath)) {
        if (tellOther() || std::chrono::steady_clock::now() > end) {
            isFirst_ = false;
            return;
        }
        std::this_thread::sleep_for(10ms);
    }
    listen();
}

/// False only when another process has it.
bool OneCopy::lock(const std::filesystem::path& file) {
    lock_ = Descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    return !lock_ || flock(lock_.number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool OneCopy::tellOther() const {
    const auto address = addressOf(socketPath_);
    const Descriptor sender = datagramSocket();
    constexpr char message = 1;
    return address && sendto(sender.number(), &message, 1, 0, generic(*address), sizeof *address) == 1;
}

void OneCopy::listen() {
    const auto address = addressOf(socketPath_);
    if (!address || !lock_) {
        return;
    }
    unlink(socketPath_.c_str()); // what a killed process left
    socket_ = datagramSocket();
    if (bind(socket_.number(), generic(*address), sizeof *address) != 0) {
        return;
    }
    notifier_ = std::make_unique<QSocketNotifier>(socket_.number(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] {
        char message = 0;
        while (recv(socket_.number(), &message, 1, 0) >= 0) {
        }
        startedAgain_();
    });
}

void OneCopy::stopListening() {
    if (notifier_) {
        notifier_.reset();
        unlink(socketPath_.c_str());
    }
}

} // namespace Linux
