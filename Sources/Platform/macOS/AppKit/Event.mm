#include "Platform/AppKit/Event.h"

#import <AppKit/AppKit.h>

namespace NS {

// The numbers pass through unchanged: they must be AppKit's.
static_assert(static_cast<NSUInteger>(EventType::LeftMouseDown) == NSEventTypeLeftMouseDown);
static_assert(static_cast<NSUInteger>(EventType::LeftMouseUp) == NSEventTypeLeftMouseUp);
static_assert(static_cast<NSUInteger>(EventType::RightMouseDown) == NSEventTypeRightMouseDown);
static_assert(static_cast<NSUInteger>(EventType::RightMouseUp) == NSEventTypeRightMouseUp);
static_assert(static_cast<NSUInteger>(EventType::MouseMoved) == NSEventTypeMouseMoved);

static_assert(static_cast<unsigned long long>(EventMask::LeftMouseUp) == NSEventMaskLeftMouseUp);
static_assert(static_cast<unsigned long long>(EventMask::RightMouseUp) == NSEventMaskRightMouseUp);

static_assert(static_cast<NSUInteger>(EventModifierFlags::Shift) == NSEventModifierFlagShift);
static_assert(static_cast<NSUInteger>(EventModifierFlags::Control) == NSEventModifierFlagControl);
static_assert(static_cast<NSUInteger>(EventModifierFlags::Option) == NSEventModifierFlagOption);
static_assert(static_cast<NSUInteger>(EventModifierFlags::Command) == NSEventModifierFlagCommand);

unsigned long Event::pressedMouseButtons() {
    return [NSEvent pressedMouseButtons];
}

EventModifierFlags Event::currentModifierFlags() {
    return static_cast<EventModifierFlags>([NSEvent modifierFlags]);
}

} // namespace NS
