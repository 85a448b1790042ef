#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Object.h"

#include <functional>

namespace NS {

/// Something to do at a time (NSTimer). It does nothing until it is added to a run loop, which then keeps it until it
/// has fired or is invalidated. What the machine's sleep or a clock that is set do to it differs from system to system:
/// who depends on the wall clock listens for those notifications and arms anew. Main thread only.
class Timer : public Object {
public:
    /// Fires at `fireDate`, and when it repeats every `interval` seconds after that. The timer keeps the block: it must
    /// hold its owner weakly.
    static Timer initWithFireDate(const Date& fireDate, double interval, bool repeats, std::function<void()> block);

    Date fireDate() const;
    double timeInterval() const; // 0 when it does not repeat

    /// How late it may fire, in seconds.
    void setTolerance(double seconds);
    double tolerance() const;

    /// It will not fire any more.
    void invalidate();
    /// Whether it may still fire.
    bool isValid() const;

    using Object::Object;
};

} // namespace NS
