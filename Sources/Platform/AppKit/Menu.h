#pragma once

#include "Platform/AppKit/Event.h"
#include "Platform/Foundation/Object.h"

#include <functional>
#include <string>

namespace NS {

/// A line of a menu (NSMenuItem).
class MenuItem : public Object {
public:
    MenuItem() = default;
    /// An empty action leaves the item without one. `keyEquivalent` is one character, pressed with Command, or "" for
    /// none.
    MenuItem(const std::string& title, std::function<void()> action, const std::string& keyEquivalent);
    static MenuItem separatorItem();

    bool isSeparatorItem() const;
    std::string title() const;
    std::string keyEquivalent() const;
    EventModifierFlags keyEquivalentModifierMask() const;

    void setEnabled(bool enabled);
    bool isEnabled() const;

    using Object::Object;
};

/// A menu (NSMenu).
class Menu : public Object {
public:
    static Menu menu(); // a new, empty one

    void addItem(const MenuItem& item);
    long numberOfItems() const;
    /// Absent when there is no such line.
    MenuItem itemAtIndex(long index) const;
    /// Does what choosing the line does; nothing for a line that is disabled.
    void performActionForItemAtIndex(long index);

    using Object::Object;
};

} // namespace NS
