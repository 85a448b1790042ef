#pragma once

#include "Platform/IOKit/IOPMLib.h"

#include <atomic>
#include <functional>

/// The one object that keeps the machine awake: while it is active it holds one power assertion.
/// Main thread only, except `isActive`, which any thread may read.
class SleepGuard {
public:
    SleepGuard() = default;
    SleepGuard(const SleepGuard&) = delete;
    SleepGuard& operator=(const SleepGuard&) = delete;

    /// Takes the assertion if none is held. A refusal leaves the guard inactive, without a word.
    void activate();
    /// Releases the assertion if one is held.
    void deactivate();
    void toggle();

    bool isActive() const { return isActive_; }
    /// 0 whenever no assertion is held.
    NS::IOPMAssertionID assertionID() const { return assertionID_; }

private:
    void setActive(bool active);

    NS::IOPMAssertionID assertionID_ = 0;

public: // among the private ones, as the order of the members is part of the design
    /// Called with the new state after each real change of `isActive`.
    std::function<void(bool)> onChange;

private:
    std::atomic<bool> isActive_ = false;
};
