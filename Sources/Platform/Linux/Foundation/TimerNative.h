#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Linux/Native.h"
#include "Platform/Linux/Seam.h"

#include <functional>
#include <memory>
#include <set>

namespace Linux {

struct TimerNative : Native, std::enable_shared_from_this<TimerNative> {
    TimerNative(const Date& fireDate, double interval, bool repeats, std::function<void()> block)
        : fireDate(fireDate), interval(interval), repeats(repeats), block(std::move(block)) {}

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

template <>
struct NativeOf<Timer> : std::type_identity<TimerNative> {};

} // namespace Linux
