#pragma once

#include "Platform/AppKit/Event.h"
#include "Platform/Foundation/Object.h"

#include <functional>
#include <string>

namespace NS {

/// A line of a menu (NSMenuItem).
class MenuItem : public Object {
public:
    /// An empty action leaves the item without one. `keyEquivalent` is one character, pressed with Command, or "" for
    /// none.
    static MenuItem initWithTitle(const std::string& title, std::function<void()> action,
                                  const std::string& keyEquivalent);
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
    /// An empty one. The title shows in a menu bar only.
    static Menu initWithTitle(const std::string& title);

    void addItem(const MenuItem& item);
    long numberOfItems() const;
    /// Absent when there is no such line.
    MenuItem itemAtIndex(long index) const;
    /// Does what choosing the line does; nothing for a line that is disabled.
    void performActionForItemAtIndex(long index);

    using Object::Object;
};

} // namespace NS
