#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/Power/IdleInhibitors.h"
#include "Platform/Linux/Seam.h"
#include "Platform/NoDestructor.h"

#include <map>
#include <memory>

namespace Linux {

namespace {

constexpr IOReturn success = 0;
constexpr auto kIOReturnError = static_cast<IOReturn>(0xe00002bcU);
constexpr auto kIOReturnBadArgument = static_cast<IOReturn>(0xe00002c2U);

/// Keeps the display on by every means that the session has.
class DisplaySleepAssertion {
public:
    DisplaySleepAssertion(const QString& application, const QString& reason)
        : screenSaver_(application, reason), login_(application, reason) {}

    /// Whether at least one of the means holds.
    bool isHeld() {
        const bool byScreenSaver = screenSaver_.isGranted();
        const bool byLogin = login_.isGranted();
        return byScreenSaver || byLogin || x_.isGranted();
    }

private:
    // Both services are asked before either is waited for.
    ScreenSaverInhibitor screenSaver_;
    LoginInhibitor login_;
    XInhibitor x_;
};

using Assertions = std::map<IOPMAssertionID, std::unique_ptr<DisplaySleepAssertion>>;

/// Never destroyed: the system drops what is still held when the process ends, and by then Qt is gone.
Assertions& assertions() {
    static NoDestructor<Assertions> held;
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

IOReturn createPowerAssertion(const std::string&, IOPMAssertionLevel, const std::string& name, IOPMAssertionID* id) {
    const auto application = native(Bundle::mainBundle()).displayName();
    auto assertion =
        std::make_unique<DisplaySleepAssertion>(QString::fromStdString(application), QString::fromStdString(name));
    if (!assertion->isHeld()) {
        return kIOReturnError;
    }
    *id = unusedID();
    assertions().emplace(*id, std::move(assertion));
    return success;
}

IOReturn releasePowerAssertion(IOPMAssertionID id) {
    return assertions().erase(id) == 1 ? success : kIOReturnBadArgument;
}

} // namespace Linux
