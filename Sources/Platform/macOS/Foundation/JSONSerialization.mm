#include "Platform/Foundation/JSONSerialization.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

std::optional<PropertyListValue> JSONSerialization::JSONObjectWithData(const std::string& data) {
    const id json = [NSJSONSerialization JSONObjectWithData:toNSData(data) options:0 error:nil];
    return json ? std::optional(toValue(json)) : std::nullopt;
}

} // namespace NS
