#include "Platform/Foundation/Log.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

void Log(const std::string& line) {
    NSLog(@"%@", toNSString(line)); // never the line as a format
}

} // namespace NS
