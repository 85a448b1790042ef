#include "Platform/Foundation/Timer.h"

#include "Platform/Linux/Foundation/TimerNative.h"
#include "Platform/NoDestructor.h"

#include <cmath>

namespace Linux {

std::set<std::shared_ptr<TimerNative>>& TimerNative::scheduled() {
    static NoDestructor<std::set<std::shared_ptr<TimerNative>>> timers;
    return *timers;
}

void TimerNative::schedule() {
    if (isValid && scheduled().insert(shared_from_this()).second) {
        arm();
    }
}

void TimerNative::arm() {
    const auto work = [this] { fire(); };
    // A repeating one goes by its interval: a wall clock that is set back must not put it off.
    alarm_ = repeats ? makeDelay(fireDate.timeIntervalSince1970() - now().timeIntervalSince1970(), work)
                     : makeAlarm(fireDate, work);
}

void TimerNative::fire() {
    const auto keep = shared_from_this(); // the block may let go of every other handle
    if (repeats) {
        // Repetitions that sleep prevented are not made up for.
        const double late = Date::date().timeIntervalSince1970() - fireDate.timeIntervalSince1970();
        fireDate = fireDate.dateByAddingTimeInterval((std::floor(late / interval) + 1) * interval);
        arm();
        const auto copy = block;
        copy();
    } else {
        const auto last = block;
        invalidate();
        last();
    }
}

void TimerNative::invalidate() {
    isValid = false;
    block = nullptr;
    alarm_ = nullptr;
    scheduled().erase(shared_from_this());
}

} // namespace Linux

namespace NS {

using namespace Linux;

Timer Timer::initWithFireDate(const Date& fireDate, double interval, bool repeats, std::function<void()> block) {
    return handle<Timer>(std::make_shared<TimerNative>(fireDate, interval, repeats, std::move(block)));
}

Date Timer::fireDate() const {
    return native(*this).fireDate;
}

double Timer::timeInterval() const {
    return native(*this).repeats ? native(*this).interval : 0;
}

void Timer::setTolerance(double seconds) {
    native(*this).tolerance = seconds; // an exact alarm is within any tolerance, and costs no more here
}

double Timer::tolerance() const {
    return native(*this).tolerance;
}

void Timer::invalidate() {
    native(*this).invalidate();
}

bool Timer::isValid() const {
    return native(*this).isValid;
}

} // namespace NS
