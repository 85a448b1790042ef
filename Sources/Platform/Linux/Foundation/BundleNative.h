#pragma once

#include "Platform/Foundation/Bundle.h"
#include "Platform/Linux/Native.h"

#include <filesystem>
#include <optional>
#include <string>

namespace Linux {

/// The bundle around an executable, as it was when that was looked up: an update that takes its
/// place changes nothing here.
struct BundleNative : Native {
    explicit BundleNative(std::filesystem::path executablePath);

    const std::filesystem::path executable;
    const std::filesystem::path path;
    const Dictionary info;

    /// The text under a key of Info.plist, unless it is empty.
    std::optional<std::string> text(const std::string& key) const;
    /// What the user knows it by.
    std::string displayName() const;
    /// What files that belong to it are called: its identifier, or without one its executable's name.
    std::string fileName() const;
};

template <>
struct NativeOf<Bundle> : std::type_identity<BundleNative> {};

} // namespace Linux
