#pragma once

#include "Platform/Foundation/PropertyListValue.h"
#include "Platform/Linux/Native.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <plist/plist.h>
#include <string>

namespace Linux {

struct FreePlist {
    void operator()(plist_t node) const { plist_free(node); }
};

/// A node of libplist and all below it, also the kinds that `PropertyListValue` cannot hold: data, dates, identifiers.
using Plist = std::unique_ptr<void, FreePlist>;

/// The dictionary in `bytes` (XML or binary); null when they hold anything else, or exceed limits that no real file
/// comes near: libplist calls itself once for each level.
Plist dictionaryPlist(const std::string& bytes);

std::string xmlOfPlist(plist_t node);

PropertyListValue valueOfPlist(plist_t node);

/// Null when the value holds something that no property list can be made of, or is nested too deeply to be read again.
Plist plistOfValue(const PropertyListValue& value);

/// The dictionary in a property-list file, if it is one.
std::optional<Dictionary> dictionaryWithContentsOfFile(const std::filesystem::path& file);

} // namespace Linux
