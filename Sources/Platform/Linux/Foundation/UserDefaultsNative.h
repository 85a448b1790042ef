#pragma once

#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Linux/Foundation/PropertyListStore.h"
#include "Platform/Linux/Native.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace Linux {

struct UserDefaultsNative : Native, std::enable_shared_from_this<UserDefaultsNative> {
    explicit UserDefaultsNative(const std::filesystem::path& file);

    void registerDefaults(const Dictionary& defaults);
    /// The stored value, or else the registered one, or else one that reads as nothing.
    PropertyListValue value(const std::string& key);
    /// Sees to it that the change is on the disk once the event loop has come round.
    void setValue(const std::optional<PropertyListValue>& value, const std::string& key);
    bool write();

private:
    void scheduleWrite();

    PropertyListStore store_;
    std::mutex mutex_; // guards what follows
    Dictionary registered_;
};

template <>
struct NativeOf<UserDefaults> : std::type_identity<UserDefaultsNative> {};

} // namespace Linux
