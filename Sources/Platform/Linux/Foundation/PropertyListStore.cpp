#include "Platform/Linux/Foundation/PropertyListStore.h"

#include "Platform/Linux/Foundation/Files.h"

#include <QLoggingCategory>
#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace Linux {

namespace {

/// Off unless asked for: QT_LOGGING_RULES="vantorel.preferences.info=true".
Q_LOGGING_CATEGORY(preferences, "vantorel.preferences", QtWarningMsg)

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// Whether it is the file that cannot be read, and not this process that cannot read (out of memory or descriptors).
bool isFaultOfFile(const std::error_code& error) {
    constexpr std::array faults = {std::errc::permission_denied, std::errc::invalid_argument, std::errc::file_too_large,
                                   std::errc::no_such_device_or_address, std::errc::too_many_symbolic_link_levels};
    return std::any_of(faults.begin(), faults.end(), [&](std::errc fault) { return error == fault; });
}

} // namespace

PropertyListStore::PropertyListStore(std::filesystem::path file) : file_(std::move(file)) {}

std::optional<PropertyListValue> PropertyListStore::value(const std::string& key) {
    const std::lock_guard guard(mutex_);
    plist_t node = nullptr;
    if (const auto change = changes_.find(key); change != changes_.end()) {
        node = change->second.get();
    } else {
        refresh();
        node = plist_dict_get_item(stored_->dictionary.get(), key.c_str());
    }
    return node ? std::optional(valueOfPlist(node)) : std::nullopt;
}

void PropertyListStore::setValue(const std::optional<PropertyListValue>& value, const std::string& key) {
    auto node = value ? plistOfValue(*value) : nullptr;
    if (value && !node) {
        return;
    }
    const std::lock_guard guard(mutex_);
    changes_.insert_or_assign(key, std::move(node));
}

bool PropertyListStore::write() {
    const std::lock_guard guard(mutex_);
    if (changes_.empty()) {
        return true;
    }
    const auto folder = file_.parent_path();
    if (makeFolders(folder)) {
        return false;
    }
    const FolderLock lock(folder);
    return !lock.error() && writeLocked();
}

bool PropertyListStore::writeLocked() {
    auto current = load(); // anew: another process may have written since
    if (current.condition == Condition::Unknown) {
        return false;
    }
    auto dictionary = merged(current.dictionary.get());
    const auto text = xmlOfPlist(dictionary.get());
    if (text != xmlOfPlist(current.dictionary.get())) {
        const bool isDamaged = current.condition == Condition::Damaged;
        FileReplacement replacement(file_, 0600);
        if (text.size() > maxFileSize || replacement.write(text) || (isDamaged && keepAside()) ||
            replacement.commit()) {
            return false;
        }
        current.dictionary = std::move(dictionary);
    }
    stored_ = std::move(current);
    changes_.clear();
    return true;
}

PropertyListStore::Stamp PropertyListStore::stampOf(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)};
}

// The clock of files ticks every few milliseconds, so a file that changed just now may change again unseen.
bool PropertyListStore::isSettled(const Stamp& stamp) {
    using namespace std::chrono;
    const auto now = system_clock::now().time_since_epoch();
    return now - std::chrono::nanoseconds(stamp.changed) > 100ms;
}

std::optional<PropertyListStore::Stamp> PropertyListStore::stampOfFile() const {
    struct stat status = {};
    return stat(file_.c_str(), &status) == 0 ? std::optional(stampOf(status)) : std::nullopt;
}

PropertyListStore::Stored PropertyListStore::load() const {
    Stored result;
    result.stamp = stampOfFile(); // before reading: a change meanwhile shows at the next look
    result.isSettled = !result.stamp || isSettled(*result.stamp);
    std::string bytes;
    const auto error = readFile(file_, bytes);
    if (!error) {
        result.dictionary = dictionaryPlist(bytes);
    }
    if (!result.dictionary) {
        result.dictionary.reset(plist_new_dict());
        const bool isAbsent = error == std::errc::no_such_file_or_directory;
        const bool isDamaged = !error || isFaultOfFile(error);
        if (isDamaged) {
            qCInfo(preferences) << file_.c_str() << "holds no property list that can be read, and counts as empty";
        }
        result.condition = isAbsent ? Condition::Good : isDamaged ? Condition::Damaged : Condition::Unknown;
    }
    return result;
}

void PropertyListStore::refresh() {
    if (stored_ && stored_->isSettled && stored_->stamp == stampOfFile()) {
        return;
    }
    auto fresh = load();
    if (fresh.condition != Condition::Unknown || !stored_) {
        stored_ = std::move(fresh);
    }
}

Plist PropertyListStore::merged(plist_t dictionary) const {
    Plist result(plist_copy(dictionary));
    for (const auto& [key, node] : changes_) {
        if (node) {
            plist_dict_set_item(result.get(), key.c_str(), plist_copy(node.get()));
        } else {
            plist_dict_remove_item(result.get(), key.c_str());
        }
    }
    return result;
}

std::error_code PropertyListStore::keepAside() const {
    auto aside = file_;
    aside += ".damaged";
    std::error_code error;
    for (int number = 2; exists(symlink_status(aside, error)); ++number) {
        aside = file_;
        aside += ".damaged-" + std::to_string(number);
    }
    rename(file_, aside, error);
    return error;
}

} // namespace Linux
