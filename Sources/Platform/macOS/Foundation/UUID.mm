#include "Platform/Foundation/UUID.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

UUID UUID::init() {
    return handle<UUID>([NSUUID UUID]);
}

std::string UUID::UUIDString() const {
    return toString([object<NSUUID>(*this) UUIDString]);
}

} // namespace NS
