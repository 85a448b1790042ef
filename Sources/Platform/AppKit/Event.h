#pragma once

namespace NS {

enum class EventType : unsigned long { LeftMouseDown = 1, LeftMouseUp = 2, RightMouseDown = 3, RightMouseUp = 4 };

/// One bit for each event type: 1 << type.
enum class EventMask : unsigned long long { LeftMouseUp = 1ULL << 2, RightMouseUp = 1ULL << 4 };

enum class EventModifierFlags : unsigned long {
    None = 0,
    Shift = 1UL << 17,
    Control = 1UL << 18,
    Option = 1UL << 19,
    Command = 1UL << 20,
};

constexpr EventMask operator|(EventMask a, EventMask b) {
    return static_cast<EventMask>(static_cast<unsigned long long>(a) | static_cast<unsigned long long>(b));
}

constexpr EventModifierFlags operator|(EventModifierFlags a, EventModifierFlags b) {
    return static_cast<EventModifierFlags>(static_cast<unsigned long>(a) | static_cast<unsigned long>(b));
}

constexpr bool contains(EventModifierFlags flags, EventModifierFlags flag) {
    return (static_cast<unsigned long>(flags) & static_cast<unsigned long>(flag)) != 0;
}

/// What the user just did (NSEvent), as far as the program looks at it. Event types that are not listed above
/// keep AppKit's number.
struct Event {
    EventType type;
    EventModifierFlags modifierFlags = EventModifierFlags::None;
};

} // namespace NS
