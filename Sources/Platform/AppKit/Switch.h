#pragma once

#include "Platform/AppKit/Control.h"

namespace NS {

/// On or off (NSSwitch).
class Switch : public Control {
public:
    static Switch initWithFrame(const Rect& frame);

    /// Does not run the action.
    void setState(ControlStateValue state);
    ControlStateValue state() const;

    using Control::Control;
};

} // namespace NS
