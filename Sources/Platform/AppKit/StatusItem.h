#pragma once

#include "Platform/AppKit/Event.h"
#include "Platform/AppKit/Image.h"
#include "Platform/AppKit/Menu.h"
#include "Platform/Foundation/Object.h"

#include <functional>
#include <string>

namespace NS {

enum class StatusItemBehavior : unsigned long { None = 0, RemovalAllowed = 1UL << 1, TerminationOnRemoval = 1UL << 2 };

namespace StatusItemLength {
inline constexpr double Square = -2; // as wide as the bar is high
}

/// The face of a status item (NSStatusBarButton).
class StatusBarButton : public Object {
public:
    void setImage(const Image& image);
    Image image() const;
    void setToolTip(const std::string& text);
    std::string toolTip() const;

    /// Runs for the events of the mask, with that event as the application's current one. The button keeps the action:
    /// it must hold its owner weakly.
    void setAction(std::function<void()> action);
    /// Which events run the action; returns the mask that was.
    EventMask sendActionOn(EventMask mask);

    /// Opens the item's menu and returns when it has closed; without a menu, runs the action.
    void performClick();

    using Object::Object;
};

/// A place of this application in the system's bar (NSStatusItem), shown for as long as a handle to it lives. Where
/// the session has no bar yet, it shows as soon as there is one.
class StatusItem : public Object {
public:
    double length() const;

    void setBehavior(StatusItemBehavior behavior);
    StatusItemBehavior behavior() const;

    /// May be absent.
    StatusBarButton button() const;

    void setMenu(const Menu& menu); // an absent one detaches
    Menu menu() const;

    using Object::Object;
};

class StatusBar : public Object {
public:
    static StatusBar systemStatusBar();
    StatusItem statusItemWithLength(double length);

    using Object::Object;
};

} // namespace NS
