#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/Power/IdleInhibition.h"
#include "Platform/Linux/Seam.h"
#include "Platform/NoDestructor.h"

#include <set>

namespace Linux {

namespace {

constexpr IOReturn success = 0;
constexpr auto kIOReturnError = static_cast<IOReturn>(0xe00002bcU);
constexpr auto kIOReturnBadArgument = static_cast<IOReturn>(0xe00002c2U);

/// Never destroyed: the system drops what is still held when the process ends, and by then Qt is gone.
IdleInhibition& idleInhibition() {
    static NoDestructor<IdleInhibition> inhibition;
    return *inhibition;
}

/// The identifiers that are not released yet.
std::set<IOPMAssertionID>& assertions() {
    static NoDestructor<std::set<IOPMAssertionID>> held;
    return *held;
}

IOPMAssertionID unusedID() {
    static IOPMAssertionID last = 0;
    do {
        ++last;
    } while (last == 0 || assertions().contains(last));
    return last;
}

} // namespace

void preparePower() {
    idleInhibition().prepare();
}

IOReturn createPowerAssertion(const std::string&, IOPMAssertionLevel, const std::string& name, IOPMAssertionID* id) {
    const auto application = native(Bundle::mainBundle()).displayName();
    if (assertions().empty() &&
        !idleInhibition().hold(QString::fromStdString(application), QString::fromStdString(name))) {
        return kIOReturnError;
    }
    *id = unusedID();
    assertions().insert(*id);
    return success;
}

IOReturn releasePowerAssertion(IOPMAssertionID id) {
    if (assertions().erase(id) == 0) {
        return kIOReturnBadArgument;
    }
    if (assertions().empty()) {
        idleInhibition().release();
    }
    return success;
}

} // namespace Linux
