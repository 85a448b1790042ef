#pragma once

#include "Platform/Foundation/Object.h"

#include <functional>

namespace NS {

/// Where blocks are run (dispatch_queue_t). Safe from any thread.
class DispatchQueue : public Object {
public:
    /// The main thread's event loop.
    static DispatchQueue main();
    /// Worker threads, at default priority.
    static DispatchQueue global();

    /// Returns at once. The queue keeps the block until it has run.
    void async(std::function<void()> block) const;
    /// The same, not before `seconds` have passed, those not counted in which the machine sleeps. Main thread only.
    void asyncAfter(double seconds, std::function<void()> block) const;

    using Object::Object;
};

} // namespace NS
