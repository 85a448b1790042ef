#include "StatusItemController.h"

#include "L10n.h"
#include "Platform/AppKit/Application.h"
#include "StatusIcons.h"
#include "Weakly.h"

#include <utility>

namespace {

constexpr unsigned long rightButton = 1UL << 1;

} // namespace

std::shared_ptr<StatusItemController> StatusItemController::create(std::shared_ptr<SleepGuard> sleepGuard) {
    std::shared_ptr<StatusItemController> controller(new StatusItemController(std::move(sleepGuard)));
    controller->connect();
    return controller;
}

StatusItemController::StatusItemController(std::shared_ptr<SleepGuard> sleepGuard)
    : statusItem_(NS::StatusBar::systemStatusBar().statusItemWithLength(NS::StatusItemLength::Square)),
      sleepGuard_(std::move(sleepGuard)) {}

void StatusItemController::connect() {
    statusItem_.setBehavior(NS::StatusItemBehavior::None);
    if (auto button = statusItem_.button()) {
        button.setAction(weakly(weak_from_this(), &StatusItemController::statusItemClicked));
        button.sendActionOn(NS::EventMask::LeftMouseUp | NS::EventMask::RightMouseUp);
    }
    sleepGuard_->onChange = weakly(weak_from_this(), &StatusItemController::refreshIcon);
    refreshIcon();
}

// The tooltip keeps its language until the next change of state, unlike the menu, which is new at each opening.
void StatusItemController::refreshIcon() {
    auto button = statusItem_.button();
    if (!button) {
        return;
    }
    const bool active = sleepGuard_->isActive();
    button.setImage(active ? StatusIcons::filled() : StatusIcons::outline());
    button.setToolTip(L10n::t(active ? "menu.statusOn" : "menu.statusOff"));
}

// From macOS 27 on, the event of the action may be another one than the click, typically a movement of the mouse. What
// is held down is asked for only then: on X11 that waits for the server.
bool StatusItemController::wantsMenu(const std::optional<NS::Event>& event,
                                     const std::function<unsigned long()>& pressedButtons,
                                     const std::function<NS::EventModifierFlags()>& modifiers) {
    if (!event) {
        return false;
    }
    if (event->type == NS::EventType::LeftMouseUp || event->type == NS::EventType::RightMouseUp) {
        return event->type == NS::EventType::RightMouseUp ||
               contains(event->modifierFlags, NS::EventModifierFlags::Control);
    }
    return (pressedButtons() & rightButton) != 0 || contains(modifiers(), NS::EventModifierFlags::Control);
}

void StatusItemController::statusItemClicked() {
    if (!wantsMenu(NS::Application::sharedApplication().currentEvent(), NS::Event::pressedMouseButtons,
                   NS::Event::currentModifierFlags)) {
        toggleFromMenu();
        return;
    }
    statusItem_.setMenu(buildMenu());
    if (auto button = statusItem_.button()) {
        button.performClick();
    }
    statusItem_.setMenu(NS::Menu()); // so that the next click reaches this action again
}

NS::Menu StatusItemController::buildMenu() {
    const bool active = sleepGuard_->isActive();

    auto stateLine = NS::MenuItem::initWithTitle(L10n::t(active ? "menu.statusOn" : "menu.statusOff"), nullptr, "");
    stateLine.setEnabled(false);

    auto menu = NS::Menu::initWithTitle("");
    menu.addItem(stateLine);
    menu.addItem(NS::MenuItem::separatorItem());
    menu.addItem(NS::MenuItem::initWithTitle(L10n::t(active ? "menu.turnOff" : "menu.turnOn"),
                                             weakly(weak_from_this(), &StatusItemController::toggleFromMenu), ""));
    menu.addItem(NS::MenuItem::initWithTitle(L10n::t("menu.settings"),
                                             weakly(weak_from_this(), &StatusItemController::openSettings), ","));
    menu.addItem(NS::MenuItem::separatorItem());
    menu.addItem(NS::MenuItem::initWithTitle(
        L10n::t("menu.quit"), [] { NS::Application::sharedApplication().terminate(); }, "q"));
    return menu;
}

void StatusItemController::toggleFromMenu() {
    if (onManualToggle) {
        onManualToggle();
    }
    sleepGuard_->toggle();
}

void StatusItemController::openSettings() {
    if (onOpenSettings) {
        onOpenSettings();
    }
}
