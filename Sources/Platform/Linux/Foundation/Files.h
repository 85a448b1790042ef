#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <system_error>
#include <utility>
#include <vector>

namespace Linux {

/// The largest file that is read: everything read here is a handful of settings.
inline constexpr std::size_t largestFile = std::size_t{1} << 20;

/// The folder of the user's settings, from the environment at each call.
std::filesystem::path configFolder();
/// The folders of the administrator's settings, the most important first, from the environment at each call.
/// https://specifications.freedesktop.org/basedir-spec/latest/
std::vector<std::filesystem::path> systemConfigFolders();
/// The folder of what the user can lose.
std::filesystem::path cacheFolder();

/// A file descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;

    int number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

private:
    int number_;
};

/// Reads to the end. More than `largestFile` is `file_too_large`.
std::error_code readAll(int descriptor, std::string& bytes);
std::error_code writeAll(int descriptor, std::string_view bytes);

/// Reads a regular file into `bytes`. Larger than `largestFile` is `file_too_large`, another kind of file
/// `invalid_argument`.
std::error_code readFile(const std::filesystem::path& file, std::string& bytes);

/// Makes the folder and those above it, for the user alone.
std::error_code makeFolders(const std::filesystem::path& folder);

/// Keeps every other process that takes it out of a folder, for as long as this object lives.
class FolderLock {
public:
    explicit FolderLock(const std::filesystem::path& folder);

    /// Why the lock could not be taken: above all `timed_out`, when another process did not let go within a second.
    std::error_code error() const { return error_; }

private:
    std::error_code lock();

    Descriptor folder_;
    std::error_code error_;
};

/// Replaces a file whole: readers see the old contents or the new, and so does the next start after a crash.
/// The caller holds the folder's lock, since every replacement goes through a side file with the same name.
class FileReplacement {
public:
    FileReplacement(const std::filesystem::path& file, mode_t mode);
    ~FileReplacement(); // takes the side file away unless it was put in place
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Brings the new contents to the disk, beside the file.
    std::error_code write(std::string_view bytes);
    /// Puts them in the file's place.
    std::error_code commit();

private:
    std::filesystem::path file_;
    std::filesystem::path side_;
    mode_t mode_;
    bool pending_ = false;
};

} // namespace Linux
