#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/Timer.h"

namespace NS {

/// When a timer fires: `Common` is also while a menu is open (NSRunLoopCommonModes).
enum class RunLoopMode { Common };

/// A thread's event loop (NSRunLoop). Main thread only.
class RunLoop : public Object {
public:
    static RunLoop mainRunLoop();

    void addTimer(const Timer& timer, RunLoopMode mode);

    using Object::Object;
};

} // namespace NS
