#pragma once

#include "Platform/Foundation/Object.h"

#include <map>
#include <string>

namespace NS {

/// This process (NSProcessInfo). Safe from any thread.
class ProcessInfo : public Object {
public:
    static ProcessInfo processInfo();

    std::map<std::string, std::string> environment() const;
    int processIdentifier() const;

    using Object::Object;
};

} // namespace NS
