#include "Platform/AppKit/StatusItem.h"

#include "Platform/Linux/AppKit/CurrentEvent.h"
#include "Platform/Linux/AppKit/MenuNative.h"
#include "Platform/Linux/AppKit/StatusItemNative.h"

#include <QApplication>
#include <QWidget>

namespace Linux {

namespace {

bool contains(EventMask mask, EventType type) {
    return (static_cast<unsigned long long>(mask) & (1ULL << static_cast<unsigned long>(type))) != 0;
}

} // namespace

void StatusItemNative::mouseUp(const Event& event, const QPoint& where) {
    if (auto* open = QApplication::activePopupWidget()) { // a second click puts the menu away
        open->close();
        return;
    }
    lastClick_ = where;
    act(event);
}

void StatusItemNative::act(const Event& event) {
    const CurrentEvent current(event);
    if (const auto copy = action; copy && contains(mask, event.type)) {
        copy();
    }
}

Menu StatusItemNative::menuOfRightClick() {
    const auto alive = shared_from_this(); // the action may let go of the item
    Menu opened;
    asked_ = &opened;
    act({EventType::RightMouseUp});
    asked_ = nullptr;
    return opened;
}

void StatusItemNative::performClick() {
    if (menu && asked_) {
        *asked_ = menu;
    } else if (menu) {
        shared(menu)->popUp(lastClick_);
    } else if (const auto copy = action) {
        copy();
    }
}

} // namespace Linux

namespace NS {

using namespace Linux;

void StatusBarButton::setImage(const Image& image) {
    native(*this).image = shared(image);
    native(*this).presenter->imageChanged();
}

Image StatusBarButton::image() const {
    return handle<Image>(native(*this).image);
}

void StatusBarButton::setToolTip(const std::string& text) {
    native(*this).toolTip = QString::fromStdString(text);
    native(*this).presenter->toolTipChanged();
}

std::string StatusBarButton::toolTip() const {
    return native(*this).toolTip.toStdString();
}

void StatusBarButton::setAction(std::function<void()> action) {
    native(*this).action = std::move(action);
}

EventMask StatusBarButton::sendActionOn(EventMask mask) {
    return std::exchange(native(*this).mask, mask);
}

void StatusBarButton::performClick() {
    shared(*this)->performClick();
}

double StatusItem::length() const {
    return native(*this).length;
}

void StatusItem::setBehavior(StatusItemBehavior behavior) {
    native(*this).behavior = behavior;
}

StatusItemBehavior StatusItem::behavior() const {
    return native(*this).behavior;
}

// An item and its button are one object here.
StatusBarButton StatusItem::button() const {
    return handle<StatusBarButton>(shared(*this));
}

void StatusItem::setMenu(const Menu& menu) {
    native(*this).menu = menu;
}

Menu StatusItem::menu() const {
    return native(*this).menu;
}

StatusBar StatusBar::systemStatusBar() {
    return handle<StatusBar>(std::make_shared<Native>());
}

StatusItem StatusBar::statusItemWithLength(double length) {
    auto native = std::make_shared<StatusItemNative>();
    native->length = length;
    native->presenter = makeStatusItemPresenter(*native);
    return handle<StatusItem>(std::move(native));
}

} // namespace NS
