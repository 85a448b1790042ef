#include "Platform/Foundation/RunLoop.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

RunLoop RunLoop::mainRunLoop() {
    return handle<RunLoop>([NSRunLoop mainRunLoop]);
}

void RunLoop::addTimerForCommonModes(const Timer& timer) {
    [object<NSRunLoop>(*this) addTimer:object<NSTimer>(timer) forMode:NSRunLoopCommonModes];
}

} // namespace NS
