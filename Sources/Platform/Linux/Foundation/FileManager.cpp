#include "Platform/Foundation/FileManager.h"

#include "Platform/Foundation/Bundle.h"
#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Foundation/TemporaryFiles.h"
#include "Platform/Linux/Native.h"
#include "Platform/NoDestructor.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Linux {

namespace {

namespace fs = std::filesystem;

constexpr std::time_t maxAge = 86400; // seconds: a day

/// Under the user's caches.
fs::path ownFolder() {
    return cacheFolder() / native(Bundle::mainBundle()).fileName();
}

/// Whether it bears the application's name or a transfer's, was last changed more than a day ago, and is no mount.
bool isLeftOver(const fs::path& item, const struct stat& folder) {
    const auto name = item.filename().string();
    const bool isOurs = name.starts_with(native(Bundle::mainBundle()).displayName() + "-") ||
                        name.starts_with(TemporaryFiles::downloadPrefix);
    struct stat status = {};
    return isOurs && lstat(item.c_str(), &status) == 0 && status.st_dev == folder.st_dev &&
           status.st_mtime < std::time(nullptr) - maxAge;
}

/// Whether nobody but the user (and root) can put anything there.
bool isPrivate(const fs::path& folder) {
    struct stat status = {};
    return stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool copyAcrossVolumes(const fs::path& source, const fs::path& destination) {
    std::error_code error;
    fs::copy(source, destination, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    if (error) {
        std::error_code ignored;
        fs::remove_all(destination, ignored);
        return false;
    }
    fs::remove_all(source, error);
    return true;
}

bool move(const fs::path& source, const fs::path& destination) {
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EXDEV && errno != EINVAL) { // EINVAL: a file system that cannot promise not to replace
        return false;
    }
    std::error_code error;
    if (fs::exists(fs::symlink_status(destination, error))) {
        return false;
    }
    fs::rename(source, destination, error);
    return !error || (error == std::errc::cross_device_link && copyAcrossVolumes(source, destination));
}

} // namespace

void TemporaryFiles::removeOld() {
    struct stat folder = {};
    std::error_code error;
    if (stat(ownFolder().c_str(), &folder) != 0) {
        return;
    }
    std::vector<fs::path> leftOvers;
    for (fs::directory_iterator item(ownFolder(), error), end; !error && item != end; item.increment(error)) {
        if (isLeftOver(item->path(), folder)) {
            leftOvers.push_back(item->path());
        }
    }
    for (const auto& item : leftOvers) {
        fs::remove_all(item, error);
    }
}

} // namespace Linux

namespace NS {

using namespace Linux;

FileManager FileManager::defaultManager() {
    static NoDestructor<FileManager> manager(handle<FileManager>(std::make_shared<Native>()));
    return *manager;
}

// Not /tmp itself: other users can make files there first, under names that they can guess.
URL FileManager::temporaryDirectory() const {
    if (const char* chosen = std::getenv("TMPDIR"); chosen && *chosen == '/' && isPrivate(chosen)) {
        return URL::fileURLWithPath(chosen);
    }
    const auto folder = ownFolder();
    makeFolders(folder); // if it cannot be made, writing there fails
    return URL::fileURLWithPath(folder.string());
}

bool FileManager::fileExistsAtPath(const std::string& path) const {
    return access(path.c_str(), F_OK) == 0;
}

bool FileManager::isWritableFileAtPath(const std::string& path) const {
    return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

std::optional<std::string> FileManager::destinationOfSymbolicLinkAtPath(const std::string& path) const {
    std::error_code error;
    const auto destination = fs::read_symlink(path, error);
    return error ? std::nullopt : std::optional(destination.string());
}

bool FileManager::removeItemAtURL(const URL& url) const {
    std::error_code error;
    return fs::remove_all(url.path(), error) > 0 && !error;
}

bool FileManager::moveItemAtURL(const URL& source, const URL& destination) const {
    return move(source.path(), destination.path());
}

bool FileManager::createDirectoryAtURL(const URL& url, bool withIntermediateDirectories) const {
    std::error_code error;
    if (!withIntermediateDirectories) {
        return fs::create_directory(url.path(), error);
    }
    fs::create_directories(url.path(), error);
    return !error;
}

bool FileManager::setAttributes(const FileAttributes& attributes, const std::string& path) const {
    return chmod(path.c_str(), attributes.posixPermissions) == 0;
}

bool writeToURL(const std::string& text, const URL& url) {
    FileReplacement file(url.path(), 0644);
    return !file.write(text) && !file.commit();
}

} // namespace NS
