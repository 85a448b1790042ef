#include "Platform/AppKit/Event.h"

#include <QGuiApplication>

namespace NS {

// Qt's buttons have AppKit's bits: left, right.
unsigned long Event::pressedMouseButtons() {
    return static_cast<unsigned long>(QGuiApplication::mouseButtons().toInt());
}

EventModifierFlags Event::currentModifierFlags() {
    const auto pressed = QGuiApplication::queryKeyboardModifiers();
    auto flags = EventModifierFlags::None;
    if (pressed & Qt::ShiftModifier) {
        flags = flags | EventModifierFlags::Shift;
    }
    if (pressed & Qt::ControlModifier) {
        flags = flags | EventModifierFlags::Control;
    }
    if (pressed & Qt::AltModifier) {
        flags = flags | EventModifierFlags::Option;
    }
    return flags;
}

} // namespace NS
