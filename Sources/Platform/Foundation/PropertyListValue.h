#pragma once

#include "Platform/Foundation/URL.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace NS {

class PropertyListValue;
using Array = std::vector<PropertyListValue>;
using Dictionary = std::map<std::string, PropertyListValue>;

/// A property-list value, held by value: what NSString, NSNumber, NSArray and NSDictionary hold.
/// Any other kind of object a property list may hold (data, dates, null) reads as `Other`.
class PropertyListValue {
public:
    struct Other {
        friend bool operator==(const Other&, const Other&) = default;
    };

    PropertyListValue() : content_(Other{}) {}
    PropertyListValue(bool boolean) : content_(boolean) {}
    PropertyListValue(std::int64_t integer) : content_(integer) {}
    PropertyListValue(int integer) : content_(std::int64_t{integer}) {}
    PropertyListValue(double real) : content_(real) {}
    PropertyListValue(std::string text) : content_(std::move(text)) {}
    PropertyListValue(const char* text) : content_(std::string(text)) {}
    PropertyListValue(Array array) : content_(std::move(array)) {}
    PropertyListValue(Dictionary dictionary) : content_(std::move(dictionary)) {}

    const bool* boolean() const { return std::get_if<bool>(&content_); }
    const double* real() const { return std::get_if<double>(&content_); }
    const std::string* string() const { return std::get_if<std::string>(&content_); }
    const Array* array() const { return std::get_if<Array>(&content_); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&content_); }

    /// The number, when it is one with an integral value that a signed 64-bit integer can hold. A boolean is
    /// no number here.
    std::optional<std::int64_t> integer() const;

    friend bool operator==(const PropertyListValue&, const PropertyListValue&) = default;

private:
    std::variant<Other, bool, std::int64_t, double, std::string, Array, Dictionary> content_;
};

inline std::optional<std::int64_t> PropertyListValue::integer() const {
    if (const auto* integer = std::get_if<std::int64_t>(&content_)) {
        return *integer;
    }
    constexpr double limit = 9223372036854775808.0; // 2^63, the first double out of range
    if (const auto* number = real(); number && *number >= -limit && *number < limit) {
        const auto whole = static_cast<std::int64_t>(*number);
        if (static_cast<double>(whole) == *number) {
            return whole;
        }
    }
    return std::nullopt;
}

/// The dictionary in a property-list file, if it is one (NSDictionary initWithContentsOfURL:). Only the texts under
/// `wanted` need be there: what else it holds may read as `Other`, or be left out unread. Safe from any thread.
std::optional<Dictionary> dictionaryWithContentsOfURL(const URL& url, const std::vector<std::string>& wanted);

} // namespace NS
