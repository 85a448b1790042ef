#pragma once

#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Linux/Foundation/PropertyListStore.h"
#include "Platform/Linux/Native.h"

#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Linux {

/// Posted on the default center, on the main thread, some time after this process has changed something.
inline constexpr char userDefaultsDidChange[] = "NSUserDefaultsDidChangeNotification";

struct UserDefaultsNative : Native, std::enable_shared_from_this<UserDefaultsNative> {
    /// `folders`: where an administrator's files are looked for, the most important first. Values are searched in each
    /// folder's NAME.managed.plist, which nothing overrides, then in the user's `file`, then in each folder's
    /// NAME.plist.
    explicit UserDefaultsNative(const std::filesystem::path& file,
                                const std::vector<std::filesystem::path>& folders = {});

    void registerDefaults(const Dictionary& defaults);
    /// The stored value, or else the registered one, or else one that reads as nothing.
    PropertyListValue value(const std::string& key);
    /// Whether an administrator decided it.
    bool isForced(const std::string& key);
    /// Sees to it that the change is on the disk once the event loop has come round. What is forced stays as it is.
    void setValue(const std::optional<PropertyListValue>& value, const std::string& key);
    bool write();

private:
    void scheduleWrite();

    PropertyListStore store_;
    std::list<PropertyListStore> forced_; // these and the next are only ever read
    std::list<PropertyListStore> preset_;
    std::mutex mutex_; // guards what follows
    Dictionary registered_;
};

template <>
struct NativeOf<UserDefaults> : std::type_identity<UserDefaultsNative> {};

} // namespace Linux
