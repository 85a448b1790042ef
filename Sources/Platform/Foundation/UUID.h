#pragma once

#include "Platform/Foundation/Object.h"

#include <string>

namespace NS {

/// A random identifier (NSUUID). Safe from any thread.
class UUID : public Object {
public:
    /// A fresh one.
    static UUID init();

    /// 36 characters, upper case.
    std::string UUIDString() const;

    using Object::Object;
};

} // namespace NS
