#pragma once

#include "Platform/Foundation/PropertyListValue.h"

#include <optional>
#include <string>
#include <vector>

/// JSON (NSJSONSerialization). Safe from any thread.
namespace NS::JSONSerialization {

/// The keys that lead from the top to a value; "*" is any key.
using KeyPath = std::vector<std::string>;

/// The object or array that the text is, in UTF-8, UTF-16 or UTF-32; nothing when it is not well-formed JSON, or nested
/// more than 512 deep. JSON's null reads as `PropertyListValue::Other`; a number that no double can hold is no integer.
/// With `wanted`, only the texts, numbers and Booleans at these paths need be there: everything else is checked, and
/// may be left out.
std::optional<PropertyListValue> JSONObjectWithData(const std::string& data,
                                                    const std::optional<std::vector<KeyPath>>& wanted = std::nullopt);

} // namespace NS::JSONSerialization
