#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/PropertyListValue.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NS {

/// The user's preferences for this application (NSUserDefaults). Safe from any thread.
///
/// Readers search what an administrator forced first, then the stored values, then the registered ones, and coerce as
/// NSUserDefaults does; nothing here reports an error: what cannot be read is absent, what cannot be stored yet is kept
/// in memory and stored with the next change, what is forced is not stored.
class UserDefaults : public Object {
public:
    static UserDefaults standardUserDefaults();

    /// Values for keys that have none stored. Never written to disk; of this process only.
    void registerDefaults(const Dictionary& defaults);

    /// True for true, for a number other than 0, and for a text that NSString's boolValue reads as true.
    bool boolForKey(const std::string& key) const;
    /// A number without its fraction, the number that a text begins with, 1 for true; otherwise 0.
    std::int64_t integerForKey(const std::string& key) const;
    /// A text, or a number as text; absent for anything else.
    std::optional<std::string> stringForKey(const std::string& key) const;
    std::optional<Dictionary> dictionaryForKey(const std::string& key) const;

    /// Whether an administrator decided the value, which then cannot be set.
    bool objectIsForcedForKey(const std::string& key) const;

    void setBool(bool value, const std::string& key);
    void setInteger(std::int64_t value, const std::string& key);
    /// Nothing removes the key.
    void setObject(const std::optional<PropertyListValue>& value, const std::string& key);

    /// Asks that pending changes be stored now, and says whether they are.
    bool synchronize();

    using Object::Object;
};

} // namespace NS
