#pragma once

#include "Platform/Foundation/PropertyListValue.h"

#include <optional>
#include <string>

/// JSON (NSJSONSerialization). Safe from any thread.
namespace NS::JSONSerialization {

/// The object or array that the text is; nothing when it is not well-formed JSON, or nested beyond reason. JSON's null
/// reads as `PropertyListValue::Other`.
std::optional<PropertyListValue> JSONObjectWithData(const std::string& data);

} // namespace NS::JSONSerialization
