#pragma once

#include "Platform/AppKit/Control.h"

#include <functional>
#include <string>

namespace NS {

enum class BezelStyle : unsigned long { Rounded = 1 };

/// A push button or a radio button (NSButton). Radio buttons with the same superview are one group: turning one on
/// turns the others off.
class Button : public Control {
public:
    static Button buttonWithTitle(const std::string& title, std::function<void()> action);
    static Button radioButtonWithTitle(const std::string& title, std::function<void()> action);

    std::string title() const;

    void setState(ControlStateValue state);
    ControlStateValue state() const;

    void setBezelStyle(BezelStyle style);
    BezelStyle bezelStyle() const;

    /// The key that presses the button; "\r" makes it the window's default button.
    void setKeyEquivalent(const std::string& key);
    std::string keyEquivalent() const;

    /// Does what a click of the user does.
    void performClick();

    using Control::Control;
};

} // namespace NS
