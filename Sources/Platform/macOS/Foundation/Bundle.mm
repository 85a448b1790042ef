#include "Platform/Foundation/Bundle.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

Bundle Bundle::mainBundle() {
    return handle<Bundle>([NSBundle mainBundle]);
}

std::optional<std::string> Bundle::bundleIdentifier() const {
    return toOptionalString([object<NSBundle>(*this) bundleIdentifier]);
}

URL Bundle::bundleURL() const {
    return handle<URL>([object<NSBundle>(*this) bundleURL]);
}

std::optional<PropertyListValue> Bundle::objectForInfoDictionaryKey(const std::string& key) const {
    const id value = [object<NSBundle>(*this) objectForInfoDictionaryKey:toNSString(key)];
    return value ? std::optional(toValue(value)) : std::nullopt;
}

} // namespace NS
