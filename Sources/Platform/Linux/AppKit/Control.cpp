#include "Platform/AppKit/Control.h"

#include "Platform/Linux/AppKit/ViewNative.h"

namespace NS {

using namespace Linux;

void Control::setAction(std::function<void()> action) {
    native(*this).action = std::move(action);
}

void Control::setEnabled(bool enabled) {
    native(*this).widget->setEnabled(enabled);
}

bool Control::isEnabled() const {
    return native(*this).widget->isEnabled();
}

} // namespace NS
