#include "Platform/Linux/Foundation/Files.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <sstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Linux {

namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::filesystem::path homeFolder() {
    if (const char* home = std::getenv("HOME"); home && *home) {
        return home;
    }
    const passwd* user = getpwuid(getuid());
    return user ? user->pw_dir : "/";
}

std::filesystem::path userFolder(const char* variable, const char* nameAtHome) {
    const char* folder = std::getenv(variable);
    if (folder && *folder == '/') { // a relative path there counts for nothing
        return folder;
    }
    return homeFolder() / nameAtHome;
}

/// A link stays one: people keep their settings elsewhere and link to them. One that leads nowhere is replaced.
std::filesystem::path targetOf(const std::filesystem::path& file) {
    std::error_code error;
    const auto target = std::filesystem::canonical(file, error);
    return error ? file : target;
}

} // namespace

std::filesystem::path configFolder() {
    return userFolder("XDG_CONFIG_HOME", ".config");
}

std::vector<std::filesystem::path> systemConfigFolders() {
    const char* variable = std::getenv("XDG_CONFIG_DIRS");
    std::istringstream list(variable && *variable ? variable : "/etc/xdg");
    std::vector<std::filesystem::path> folders;
    for (std::string folder; std::getline(list, folder, ':');) {
        if (folder.starts_with('/')) { // a relative path there counts for nothing
            folders.emplace_back(folder);
        }
    }
    return folders;
}

std::filesystem::path cacheFolder() {
    return userFolder("XDG_CACHE_HOME", ".cache");
}

Descriptor::~Descriptor() {
    if (number_ >= 0) {
        close();
    }
}

bool Descriptor::close() {
    return ::close(std::exchange(number_, -1)) == 0;
}

Pipe::Pipe(int flags) {
    if (int ends[2]; pipe2(ends, flags) == 0) {
        readEnd = Descriptor(ends[0]);
        writeEnd = Descriptor(ends[1]);
    }
}

std::error_code readAll(int descriptor, std::string& bytes, std::size_t limit) {
    char buffer[16384];
    while (bytes.size() <= limit) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count == 0) {
            return {};
        }
        if (count > 0) {
            bytes.append(buffer, static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return lastError();
        }
    }
    return make_error_code(std::errc::file_too_large);
}

std::error_code writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return lastError();
        }
    }
    return {};
}

std::error_code readFile(const std::filesystem::path& file, std::string& bytes, std::size_t limit) {
    // Without O_NONBLOCK a pipe in the file's place would hold us until somebody writes.
    const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status = {};
    if (!descriptor || fstat(descriptor.number(), &status) != 0) {
        return lastError();
    }
    if (!S_ISREG(status.st_mode)) {
        return make_error_code(std::errc::invalid_argument);
    }
    return readAll(descriptor.number(), bytes, limit);
}

std::error_code makeFolders(const std::filesystem::path& folder) {
    if (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) {
        return {};
    }
    if (errno != ENOENT || !folder.has_relative_path()) {
        return lastError();
    }
    if (const auto error = makeFolders(folder.parent_path())) {
        return error;
    }
    return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST ? std::error_code() : lastError();
}

FolderLock::FolderLock(const std::filesystem::path& folder)
    : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), error_(folder_ ? lock() : lastError()) {}

std::error_code FolderLock::lock() {
    using namespace std::chrono_literals;
    const auto deadline = std::chrono::steady_clock::now() + 1s;
    while (flock(folder_.number(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            // NFS, whose client turns flock into a lock that needs a descriptor open for writing (flock(2), "NFS
            // details"), refuses to lock folders: better unlocked than never stored.
            return {};
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return make_error_code(std::errc::timed_out);
        }
        std::this_thread::sleep_for(1ms);
    }
    return {};
}

FileReplacement::FileReplacement(const std::filesystem::path& file, mode_t mode)
    : file_(targetOf(file)), side_(file_.native() + ".new"), mode_(mode) {}

FileReplacement::~FileReplacement() {
    if (pending_) {
        unlink(side_.c_str());
    }
}

std::error_code FileReplacement::write(std::string_view bytes) {
    unlink(side_.c_str()); // a killed process may have left one
    const Descriptor descriptor(open(side_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode_));
    if (!descriptor) {
        return lastError();
    }
    pending_ = true;
    if (const auto error = writeAll(descriptor.number(), bytes)) {
        return error;
    }
    return fsync(descriptor.number()) == 0 ? std::error_code() : lastError();
}

std::error_code FileReplacement::commit() {
    if (rename(side_.c_str(), file_.c_str()) != 0) {
        return lastError();
    }
    pending_ = false;
    const Descriptor folder(open(file_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fsync(folder.number()); // if this fails, the old contents may come back after a power cut, but whole
    return {};
}

} // namespace Linux
