#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Linux/Native.h"

#include <functional>
#include <memory>
#include <set>

namespace NS {

/// Calls back once when the wall clock reaches a time, at once when that is past. It lasts as long as it exists; where
/// the callback comes from, the alarm may be destroyed.
class Alarm {
public:
    virtual ~Alarm() = default;
};

/// The alarm of this world.
std::unique_ptr<Alarm> makeAlarm(const Date& date, std::function<void()> callback);

struct TimerNative : Native, std::enable_shared_from_this<TimerNative> {
    TimerNative(const Date& date, double seconds, bool doesRepeat, std::function<void()> work)
        : fireDate(date), interval(seconds), repeats(doesRepeat), block(std::move(work)) {}

    Date fireDate;
    const double interval;
    const bool repeats;
    std::function<void()> block;
    double tolerance = 0;
    bool isValid = true;

    /// From here on the timer fires, and is kept until it never will again.
    void schedule();
    void invalidate();

    /// The timers that the run loop keeps.
    static std::set<std::shared_ptr<TimerNative>>& scheduled();

private:
    void arm();
    void fire();

    std::unique_ptr<Alarm> alarm_;
};

} // namespace NS
