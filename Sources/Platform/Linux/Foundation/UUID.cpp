#include "Platform/Foundation/UUID.h"

#include "Platform/Linux/Native.h"

#include <QUuid>
#include <memory>

namespace NS {

namespace {

struct UUIDNative : Native {
    const QUuid uuid = QUuid::createUuid();
};

} // namespace

UUID UUID::UUIDWithRandomBytes() {
    return Bridge::handle<UUID>(std::make_shared<UUIDNative>());
}

std::string UUID::UUIDString() const {
    return Bridge::native<UUIDNative>(*this).uuid.toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace NS
