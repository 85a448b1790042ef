#include "Platform/Foundation/ProcessInfo.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

ProcessInfo ProcessInfo::processInfo() {
    return handle<ProcessInfo>([NSProcessInfo processInfo]);
}

std::map<std::string, std::string> ProcessInfo::environment() const {
    NSDictionary<NSString*, NSString*>* variables = [object<NSProcessInfo>(*this) environment];
    std::map<std::string, std::string> environment;
    forEach([variables allKeys],
            [&](NSString* name) { environment.emplace(toString(name), toString([variables objectForKey:name])); });
    return environment;
}

int ProcessInfo::processIdentifier() const {
    return [object<NSProcessInfo>(*this) processIdentifier];
}

} // namespace NS
