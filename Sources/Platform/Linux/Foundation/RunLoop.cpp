#include "Platform/Foundation/RunLoop.h"

#include "Platform/Linux/Foundation/TimerNative.h"

namespace NS {

using namespace Linux;

RunLoop RunLoop::mainRunLoop() {
    return handle<RunLoop>(std::make_shared<Native>());
}

// There is one mode here: events of every kind are handled while a menu is open.
void RunLoop::addTimer(const Timer& timer, RunLoopMode) {
    native(timer).schedule();
}

} // namespace NS
