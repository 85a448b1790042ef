#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Timer.h"
#include "SleepGuard.h"

#include <cstdint>
#include <memory>
#include <vector>

/// Switches the guard on and off at two times of day, read afresh from the preferences at each decision. A manual
/// toggle overrides it until the next of the two times. Main thread only.
class ScheduleEngine : public std::enable_shared_from_this<ScheduleEngine> {
public:
    /// Observes wake, clock and time-zone changes. Decides nothing before the owner calls `reconcile`.
    static std::shared_ptr<ScheduleEngine> create(std::shared_ptr<SleepGuard> sleepGuard);
    ~ScheduleEngine();
    ScheduleEngine(const ScheduleEngine&) = delete;
    ScheduleEngine& operator=(const ScheduleEngine&) = delete;

    /// Brings the guard into line with the schedule, unless overridden, and arms a timer for the next occurrence of
    /// each of the two times.
    void reconcile();

private:
    explicit ScheduleEngine(std::shared_ptr<SleepGuard> sleepGuard);
    void observe();
    bool boundaryPassed(const NS::Date& since) const;
    void decide(std::int64_t on, std::int64_t off);
    NS::Timer armTimer(std::int64_t minutes, void (SleepGuard::*change)());

    std::shared_ptr<SleepGuard> sleepGuard_;
    NS::Timer onTimer_;
    NS::Timer offTimer_;

public: // among the private ones, as the order of the members is part of the design
    /// A manual toggle is in force: the schedule keeps its hands off until one of its times has passed.
    bool manualOverride = false;
    NS::Date overrideSetAt = NS::Date::distantPast();

private:
    std::vector<std::pair<NS::NotificationCenter, NS::Observer>> observers_;
};
