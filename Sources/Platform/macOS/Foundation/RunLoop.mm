#include "Platform/Foundation/RunLoop.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

RunLoop RunLoop::mainRunLoop() {
    return handle<RunLoop>([NSRunLoop mainRunLoop]);
}

void RunLoop::addTimer(const Timer& timer, RunLoopMode) {
    [object<NSRunLoop>(*this) addTimer:object<NSTimer>(timer) forMode:NSRunLoopCommonModes];
}

} // namespace NS
