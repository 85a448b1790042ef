#include "Platform/Foundation/UUID.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

UUID UUID::UUIDWithRandomBytes() {
    return handle<UUID>([NSUUID UUID]);
}

std::string UUID::UUIDString() const {
    return toString([object<NSUUID>(*this) UUIDString]);
}

} // namespace NS
