#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/Timer.h"

namespace NS {

/// A thread's event loop (NSRunLoop). Main thread only.
class RunLoop : public Object {
public:
    static RunLoop mainRunLoop();

    /// In the common modes: the timer fires also while a menu is open.
    void addTimerForCommonModes(const Timer& timer);

    using Object::Object;
};

} // namespace NS
