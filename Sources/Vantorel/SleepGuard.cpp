#include "SleepGuard.h"

namespace {

// English whatever the interface language: the system's power tools show it.
constexpr char reason[] = "Vantorel is keeping your Mac awake";
constexpr char assertionType[] = "PreventUserIdleDisplaySleep";

} // namespace

void SleepGuard::activate() {
    if (isActive_) {
        return;
    }
    NS::IOPMAssertionID id = 0;
    if (NS::IOPMAssertionCreateWithName(assertionType, NS::IOPMAssertionLevel::On, reason, &id) != 0) {
        return;
    }
    assertionID_ = id;
    setActive(true);
}

void SleepGuard::deactivate() {
    if (!isActive_) {
        return;
    }
    NS::IOPMAssertionRelease(assertionID_);
    assertionID_ = 0;
    setActive(false);
}

void SleepGuard::toggle() {
    if (isActive_) {
        deactivate();
    } else {
        activate();
    }
}

void SleepGuard::setActive(bool active) {
    if (isActive_.exchange(active) == active) {
        return;
    }
    // A copy, so that the callback may replace itself.
    if (const auto callback = onChange) {
        callback(active);
    }
}
