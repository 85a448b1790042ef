#include "Platform/Foundation/Log.h"

#include "Platform/macOS/Conversions.h"

#include <algorithm>
#include <string>

namespace NS {

using namespace macOS;

// Control characters, which a foreign text may hold, would break the line or steer the terminal it is read on.
void Log(const std::string& line) {
    std::string text = line;
    std::replace_if(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
    NSLog(@"%@", toNSString(text)); // never the line as a format
}

} // namespace NS
