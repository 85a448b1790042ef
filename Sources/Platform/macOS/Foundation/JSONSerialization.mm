#include "Platform/Foundation/JSONSerialization.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

// Foundation reads everything in any case.
std::optional<PropertyListValue> JSONSerialization::JSONObjectWithData(const std::string& data,
                                                                       const std::optional<std::vector<KeyPath>>&) {
    const id json = [NSJSONSerialization JSONObjectWithData:toNSData(data) options:0 error:nil];
    return json ? std::optional(toValue(json)) : std::nullopt;
}

} // namespace NS
