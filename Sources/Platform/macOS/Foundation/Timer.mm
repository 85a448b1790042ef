#include "Platform/Foundation/Timer.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

Timer Timer::initWithFireDate(const Date& fireDate, double interval, bool repeats, std::function<void()> block) {
    // What runs is a copy: it may invalidate the timer, which then lets go of its block.
    return handle<Timer>([[NSTimer alloc] initWithFireDate:toNSDate(fireDate)
                                                  interval:interval
                                                   repeats:repeats
                                                     block:^(NSTimer*) {
                                                         enter(std::function(block));
                                                     }]);
}

Date Timer::fireDate() const {
    return toDate([object<NSTimer>(*this) fireDate]);
}

double Timer::timeInterval() const {
    return [object<NSTimer>(*this) timeInterval];
}

void Timer::setTolerance(double seconds) {
    [object<NSTimer>(*this) setTolerance:seconds];
}

double Timer::tolerance() const {
    return [object<NSTimer>(*this) tolerance];
}

void Timer::invalidate() {
    [object<NSTimer>(*this) invalidate];
}

bool Timer::isValid() const {
    return [object<NSTimer>(*this) isValid];
}

} // namespace NS
