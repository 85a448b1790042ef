#include "Platform/Foundation/ProcessInfo.h"

#include "Platform/Linux/Native.h"
#include "Platform/NoDestructor.h"

#include <memory>
#include <string_view>
#include <unistd.h>

namespace NS {

using namespace Linux;

ProcessInfo ProcessInfo::processInfo() {
    static NoDestructor<ProcessInfo> info(handle<ProcessInfo>(std::make_shared<Native>()));
    return *info;
}

std::map<std::string, std::string> ProcessInfo::environment() const {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; entry && *entry; ++entry) {
        const std::string_view text = *entry;
        if (const auto equals = text.find('='); equals != text.npos) {
            variables.emplace(text.substr(0, equals), text.substr(equals + 1));
        }
    }
    return variables;
}

int ProcessInfo::processIdentifier() const {
    return getpid();
}

} // namespace NS
