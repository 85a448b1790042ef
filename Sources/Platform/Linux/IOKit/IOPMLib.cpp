#include "Platform/IOKit/IOPMLib.h"

#include "Platform/Linux/Seam.h"

namespace NS {

namespace {

constexpr auto kIOReturnUnsupported = static_cast<IOReturn>(0xe00002c7U);

} // namespace

IOReturn IOPMAssertionCreateWithName(const std::string& type, IOPMAssertionLevel level, const std::string& name,
                                     IOPMAssertionID* id) {
    if (type != "PreventUserIdleDisplaySleep" || level != IOPMAssertionLevel::On) {
        return kIOReturnUnsupported;
    }
    return Linux::createPowerAssertion(type, level, name, id);
}

IOReturn IOPMAssertionRelease(IOPMAssertionID id) {
    return Linux::releasePowerAssertion(id);
}

} // namespace NS
