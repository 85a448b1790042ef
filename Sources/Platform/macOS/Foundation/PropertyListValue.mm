#include "Platform/Foundation/PropertyListValue.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

// Foundation reads everything in any case.
std::optional<Dictionary> dictionaryWithContentsOfURL(const URL& url, const std::vector<std::string>&) {
    NSDictionary* dictionary = [[NSDictionary alloc] initWithContentsOfURL:object<NSURL>(url)];
    return dictionary ? std::optional(toDictionary(dictionary)) : std::nullopt;
}

} // namespace NS
