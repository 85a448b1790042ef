#include "Platform/Foundation/String.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

bool writeToURL(const std::string& text, const URL& url) {
    return [toNSString(text) writeToURL:object<NSURL>(url) atomically:YES encoding:NSUTF8StringEncoding error:nil];
}

} // namespace NS
