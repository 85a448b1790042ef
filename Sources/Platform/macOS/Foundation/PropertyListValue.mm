#include "Platform/Foundation/PropertyListValue.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

std::optional<Dictionary> dictionaryWithContentsOfURL(const URL& url) {
    NSDictionary* dictionary = [[NSDictionary alloc] initWithContentsOfURL:object<NSURL>(url)];
    return dictionary ? std::optional(toDictionary(dictionary)) : std::nullopt;
}

} // namespace NS
