#pragma once

#include "Platform/Foundation/Flags.h"

namespace NS {

enum class EventType : unsigned long {
    LeftMouseDown = 1,
    LeftMouseUp = 2,
    RightMouseDown = 3,
    RightMouseUp = 4,
    MouseMoved = 5
};

/// One bit for each event type: 1 << type.
enum class EventMask : unsigned long long { LeftMouseUp = 1ULL << 2, RightMouseUp = 1ULL << 4 };

enum class EventModifierFlags : unsigned long {
    None = 0,
    Shift = 1UL << 17,
    Control = 1UL << 18,
    Option = 1UL << 19,
    Command = 1UL << 20,
};

template <>
inline constexpr bool isFlags<EventMask> = true;
template <>
inline constexpr bool isFlags<EventModifierFlags> = true;

/// What the user just did (NSEvent), as far as the program looks at it. Event types that are not listed above
/// keep AppKit's number.
struct Event {
    /// The buttons that are held down now, whatever the event: the right one is bit 1.
    static unsigned long pressedMouseButtons();
    /// The modifiers that are held down now, whatever the event (the class's `modifierFlags`).
    static EventModifierFlags currentModifierFlags();

    EventType type;
    EventModifierFlags modifierFlags = EventModifierFlags::None;
};

} // namespace NS
