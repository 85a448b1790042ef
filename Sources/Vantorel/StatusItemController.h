#pragma once

#include "Platform/AppKit/Event.h"
#include "Platform/AppKit/Menu.h"
#include "Platform/AppKit/StatusItem.h"
#include "SleepGuard.h"

#include <functional>
#include <memory>
#include <optional>

/// The cup in the menu bar: a click switches the guard, a right click or a Control-click opens the menu.
/// Main thread only.
class StatusItemController : public std::enable_shared_from_this<StatusItemController> {
public:
    /// Puts the cup in the bar and makes it follow the guard, replacing the guard's `onChange`.
    static std::shared_ptr<StatusItemController> create(std::shared_ptr<SleepGuard> sleepGuard);

    /// Whether a click asks for the menu: by the event of the action where that is the click, by what is held down
    /// where it is another one. An action without an event, as assistive software sends it, does not.
    static bool wantsMenu(const std::optional<NS::Event>& event, const std::function<unsigned long()>& pressedButtons,
                          const std::function<NS::EventModifierFlags()>& modifiers);

    /// The button's action.
    void statusItemClicked();
    void toggleFromMenu();
    void openSettings();

private:
    explicit StatusItemController(std::shared_ptr<SleepGuard> sleepGuard);
    void connect();
    void refreshIcon();
    NS::Menu buildMenu();

    NS::StatusItem statusItem_;
    std::shared_ptr<SleepGuard> sleepGuard_;

public: // after the private ones, as the order of the members is part of the design
    /// Called just before each toggle that the user makes here.
    std::function<void()> onManualToggle;
    /// Called by the menu's Settings line.
    std::function<void()> onOpenSettings;
};
