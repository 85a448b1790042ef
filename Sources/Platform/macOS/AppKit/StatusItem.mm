#include "Platform/AppKit/StatusItem.h"

#include "Platform/macOS/AppKit/ActionTarget.h"
#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<NSUInteger>(StatusItemBehavior::RemovalAllowed) == NSStatusItemBehaviorRemovalAllowed);
static_assert(static_cast<NSUInteger>(StatusItemBehavior::TerminationOnRemoval) ==
              NSStatusItemBehaviorTerminationOnRemoval);

void StatusBarButton::setImage(const Image& image) {
    [object<NSStatusBarButton>(*this) setImage:object<NSImage>(image)];
}

Image StatusBarButton::image() const {
    return handle<Image>([object<NSStatusBarButton>(*this) image]);
}

void StatusBarButton::setToolTip(const std::string& text) {
    [object<NSStatusBarButton>(*this) setToolTip:toNSString(text)];
}

std::string StatusBarButton::toolTip() const {
    return toString([object<NSStatusBarButton>(*this) toolTip]);
}

void StatusBarButton::setAction(std::function<void()> action) {
    setActionFunction(object<NSStatusBarButton>(*this), std::move(action));
}

EventMask StatusBarButton::sendActionOn(EventMask mask) {
    const NSInteger previous = [object<NSStatusBarButton>(*this) sendActionOn:static_cast<NSEventMask>(mask)];
    return static_cast<EventMask>(previous);
}

void StatusBarButton::performClick() {
    [object<NSStatusBarButton>(*this) performClick:nil];
}

double StatusItem::length() const {
    return [object<NSStatusItem>(*this) length];
}

void StatusItem::setBehavior(StatusItemBehavior behavior) {
    [object<NSStatusItem>(*this) setBehavior:static_cast<NSStatusItemBehavior>(behavior)];
}

StatusItemBehavior StatusItem::behavior() const {
    return static_cast<StatusItemBehavior>([object<NSStatusItem>(*this) behavior]);
}

StatusBarButton StatusItem::button() const {
    return handle<StatusBarButton>([object<NSStatusItem>(*this) button]);
}

void StatusItem::setMenu(const Menu& menu) {
    [object<NSStatusItem>(*this) setMenu:object<NSMenu>(menu)];
}

Menu StatusItem::menu() const {
    return handle<Menu>([object<NSStatusItem>(*this) menu]);
}

StatusBar StatusBar::systemStatusBar() {
    return handle<StatusBar>([NSStatusBar systemStatusBar]);
}

StatusItem StatusBar::statusItemWithLength(double length) {
    return handle<StatusItem>([object<NSStatusBar>(*this) statusItemWithLength:length]);
}

} // namespace NS
