#include "Platform/Foundation/UserDefaults.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

UserDefaults UserDefaults::standardUserDefaults() {
    return handle<UserDefaults>([NSUserDefaults standardUserDefaults]);
}

void UserDefaults::registerDefaults(const Dictionary& defaults) {
    [object<NSUserDefaults>(*this) registerDefaults:toNSDictionary(defaults)];
}

bool UserDefaults::boolForKey(const std::string& key) const {
    return [object<NSUserDefaults>(*this) boolForKey:toNSString(key)];
}

std::int64_t UserDefaults::integerForKey(const std::string& key) const {
    return [object<NSUserDefaults>(*this) integerForKey:toNSString(key)];
}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) const {
    return toOptionalString([object<NSUserDefaults>(*this) stringForKey:toNSString(key)]);
}

std::optional<Dictionary> UserDefaults::dictionaryForKey(const std::string& key) const {
    NSDictionary* dictionary = [object<NSUserDefaults>(*this) dictionaryForKey:toNSString(key)];
    return dictionary ? std::optional(toDictionary(dictionary)) : std::nullopt;
}

bool UserDefaults::objectIsForcedForKey(const std::string& key) const {
    return [object<NSUserDefaults>(*this) objectIsForcedForKey:toNSString(key)];
}

void UserDefaults::setBool(bool value, const std::string& key) {
    [object<NSUserDefaults>(*this) setBool:value forKey:toNSString(key)];
}

void UserDefaults::setInteger(std::int64_t value, const std::string& key) {
    [object<NSUserDefaults>(*this) setInteger:value forKey:toNSString(key)];
}

void UserDefaults::setObject(const std::optional<PropertyListValue>& value, const std::string& key) {
    // Storing nil removes the key.
    [object<NSUserDefaults>(*this) setObject:value ? toPropertyList(*value) : nil forKey:toNSString(key)];
}

bool UserDefaults::synchronize() {
    return [object<NSUserDefaults>(*this) synchronize];
}

} // namespace NS
