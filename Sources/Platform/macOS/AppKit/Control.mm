#include "Platform/AppKit/Control.h"

#include "Platform/macOS/AppKit/ActionTarget.h"
#include "Platform/macOS/Conversions.h"

namespace NS {

using namespace macOS;

static_assert(static_cast<long>(ControlStateValue::Off) == NSControlStateValueOff);
static_assert(static_cast<long>(ControlStateValue::On) == NSControlStateValueOn);

void Control::setAction(std::function<void()> action) {
    setActionFunction(object<NSControl>(*this), std::move(action));
}

void Control::setEnabled(bool enabled) {
    [object<NSControl>(*this) setEnabled:enabled];
}

bool Control::isEnabled() const {
    return [object<NSControl>(*this) isEnabled];
}

} // namespace NS
