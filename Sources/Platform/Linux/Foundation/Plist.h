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

/// A node of libplist and all below it. It keeps what `PropertyListValue` cannot hold: data, dates, identifiers.
using Plist = std::unique_ptr<void, FreePlist>;

/// The dictionary that `bytes` (XML or binary) hold; null when they hold anything else, or more containers than any
/// file of ours ever will: libplist calls itself once for each level, and a small binary file can describe an endless
/// tree.
Plist dictionaryPlist(const std::string& bytes);

std::string xmlOfPlist(plist_t node);

PropertyListValue valueOfPlist(plist_t node);

/// Null when the value holds something that no property list can be made of, or is nested too deeply to be read again.
Plist plistOfValue(const PropertyListValue& value);

/// The dictionary in a property-list file, if it is one.
std::optional<Dictionary> dictionaryWithContentsOfFile(const std::filesystem::path& file);

} // namespace Linux
