#include "Platform/AppKit/Switch.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

Switch Switch::initWithFrame(const Rect& frame) {
    return handle<Switch>([[NSSwitch alloc] initWithFrame:toNSRect(frame)]);
}

void Switch::setState(ControlStateValue state) {
    [object<NSSwitch>(*this) setState:static_cast<NSControlStateValue>(state)];
}

ControlStateValue Switch::state() const {
    return static_cast<ControlStateValue>([object<NSSwitch>(*this) state]);
}

} // namespace NS
