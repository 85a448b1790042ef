#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <system_error>
#include <utility>
#include <vector>

namespace Linux {

/// The maximum size of a file that holds a handful of settings.
inline constexpr std::size_t maxFileSize = std::size_t{1} << 20;

// From the environment at each call. https://specifications.freedesktop.org/basedir-spec/latest/

/// The user's configuration directory.
std::filesystem::path configFolder();
/// The administrator's configuration directories, the most important first.
std::vector<std::filesystem::path> systemConfigFolders();
/// The user's cache directory.
std::filesystem::path cacheFolder();

/// A file descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    int number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

    /// Whether everything written to it has reached the file.
    bool close();

private:
    int number_;
};

/// Both ends are absent when the pipe could not be made.
struct Pipe {
    explicit Pipe(int flags);

    Descriptor readEnd;
    Descriptor writeEnd;
};

/// Reads to the end. More than `limit` is `file_too_large`.
std::error_code readAll(int descriptor, std::string& bytes, std::size_t limit = maxFileSize);
std::error_code writeAll(int descriptor, std::string_view bytes);

/// Reads a regular file into `bytes`. Larger than `limit` is `file_too_large`, another kind of file `invalid_argument`.
std::error_code readFile(const std::filesystem::path& file, std::string& bytes, std::size_t limit = maxFileSize);

/// Makes the folder and those above it, for the user alone.
std::error_code makeFolders(const std::filesystem::path& folder);

/// An advisory lock on a folder, held for as long as this object lives. Other processes that want it wait.
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

/// Replaces a file whole: readers see the old contents or the new, and so does the next start after a crash. Not
/// QSaveFile: that does not sync the folder, and the program Transfer has no Qt.
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
