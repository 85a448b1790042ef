#include "Platform/AppKit/Control.h"

#include "Platform/macOS/AppKit/ActionTarget.h"
#include "Platform/macOS/Conversions.h"

namespace NS {

void Control::setAction(std::function<void()> action) {
    setActionFunction(object<NSControl>(*this), std::move(action));
}

} // namespace NS
