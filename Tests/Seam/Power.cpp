#include "Power.h"

#include "Platform/Linux/Seam.h"

namespace Seam {

Power& power() {
    static Power power;
    return power;
}

} // namespace Seam

namespace Linux {

void preparePower() {}

IOReturn createPowerAssertion(const std::string& type, IOPMAssertionLevel level, const std::string& name,
                              IOPMAssertionID* id) {
    constexpr IOReturn refused = -536870212;
    auto& power = Seam::power();
    power.initialID = *id;
    ++power.creations;
    if (power.whenAsked) {
        power.whenAsked();
    }
    if (power.refuses) {
        return refused;
    }
    *id = static_cast<IOPMAssertionID>(41 + power.creations);
    power.held[*id] = {type, level, name};
    return 0;
}

IOReturn releasePowerAssertion(IOPMAssertionID id) {
    Seam::power().releases.push_back(id);
    Seam::power().held.erase(id);
    return 0;
}

} // namespace Linux
