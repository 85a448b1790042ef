#include "Platform/Foundation/UUID.h"

#include "Platform/Linux/Native.h"

#include <QUuid>
#include <memory>

namespace Linux {

namespace {

struct UUIDNative : Native {
    const QUuid uuid = QUuid::createUuid();
};

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

UUID UUID::init() {
    return handle<UUID>(std::make_shared<UUIDNative>());
}

std::string UUID::UUIDString() const {
    return object<UUIDNative>(*this).uuid.toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace NS
