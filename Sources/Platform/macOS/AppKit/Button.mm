#include "Platform/AppKit/Button.h"

#include "Platform/macOS/AppKit/ActionTarget.h"
#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<NSUInteger>(BezelStyle::Rounded) == NSBezelStyleRounded);

Button Button::buttonWithTitle(const std::string& title, std::function<void()> action) {
    NSButton* button = [NSButton buttonWithTitle:toNSString(title) target:nil action:nil];
    setActionFunction(button, std::move(action));
    return handle<Button>(button);
}

Button Button::radioButtonWithTitle(const std::string& title, std::function<void()> action) {
    NSButton* button = [NSButton radioButtonWithTitle:toNSString(title) target:nil action:nil];
    setActionFunction(button, std::move(action));
    return handle<Button>(button);
}

std::string Button::title() const {
    return toString([object<NSButton>(*this) title]);
}

void Button::setState(ControlStateValue state) {
    [object<NSButton>(*this) setState:static_cast<NSControlStateValue>(state)];
}

ControlStateValue Button::state() const {
    return static_cast<ControlStateValue>([object<NSButton>(*this) state]);
}

void Button::setBezelStyle(BezelStyle style) {
    [object<NSButton>(*this) setBezelStyle:static_cast<NSBezelStyle>(style)];
}

BezelStyle Button::bezelStyle() const {
    return static_cast<BezelStyle>([object<NSButton>(*this) bezelStyle]);
}

void Button::setKeyEquivalent(const std::string& key) {
    [object<NSButton>(*this) setKeyEquivalent:toNSString(key)];
}

std::string Button::keyEquivalent() const {
    return toString([object<NSButton>(*this) keyEquivalent]);
}

void Button::performClick() {
    [object<NSButton>(*this) performClick:nil];
}

} // namespace NS
