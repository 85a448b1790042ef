#pragma once

#include "Platform/Foundation/PropertyListValue.h"
#include "Platform/Linux/Foundation/Plist.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>

namespace Linux {

/// Values under keys, kept in one property list that other processes may change too. Safe from any thread.
///
/// Changes wait in memory until `write`, which merges them into what the file holds by then. A file that holds no
/// dictionary reads as empty, and is kept aside under a name beside it before another takes its place.
class PropertyListStore {
public:
    explicit PropertyListStore(std::filesystem::path file);

    std::optional<PropertyListValue> value(const std::string& key);
    /// Nothing removes the key. A value that no property list can hold is passed over.
    void setValue(const std::optional<PropertyListValue>& value, const std::string& key);

    /// Brings the changes to the disk and says whether none is waiting any more. When that fails, the changes go on
    /// waiting and the file is as it was.
    bool write();

private:
    /// What tells one state of a file from another.
    struct Stamp {
        dev_t device;
        ino_t inode;
        off_t size;
        std::int64_t modified; // nanoseconds
        std::int64_t changed;
        friend bool operator==(const Stamp&, const Stamp&) = default;
    };
    enum class Condition { Good, Damaged, Unknown };
    struct Stored {
        Plist dictionary;
        Condition condition = Condition::Good;
        std::optional<Stamp> stamp; // none where there is no file
        bool isSettled = false;     // whether an equal stamp proves an equal file
    };

    static Stamp stampOf(const struct stat& status);
    static bool isSettled(const Stamp& stamp);
    std::optional<Stamp> stampOfFile() const;
    Stored load() const;
    void refresh();
    Plist merged(plist_t dictionary) const;
    bool writeLocked();
    std::error_code keepAside() const;

    const std::filesystem::path file_;
    std::mutex mutex_; // guards what follows
    std::optional<Stored> stored_;
    std::map<std::string, Plist> changes_; // null removes
};

} // namespace Linux
