#include "Platform/AppKit/Menu.h"

#include "Platform/Linux/AppKit/ClickElsewhere.h"
#include "Platform/Linux/AppKit/MenuNative.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QScreen>
#include <optional>
#include <utility>

namespace Linux {

namespace {

/// A menu whose shortcuts work while it is open, as on a Mac, though no window of ours has the focus.
class PopUpMenu : public QMenu {
protected:
    void keyPressEvent(QKeyEvent* event) override {
        const QKeySequence pressed(event->keyCombination());
        for (QAction* action : actions()) {
            if (action->isEnabled() && !action->shortcut().isEmpty() && action->shortcut() == pressed) {
                setActiveAction(action);
                QKeyEvent choose(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
                QMenu::keyPressEvent(&choose);
                return;
            }
        }
        QMenu::keyPressEvent(event);
    }
};

QAction* addTo(QMenu& menu, const MenuItemNative& item) {
    if (item.isSeparator) {
        return menu.addSeparator();
    }
    QString title = item.title;
    QAction* action = menu.addAction(title.replace(u'&', QStringLiteral("&&")));
    action->setEnabled(item.enabled);
    if (!item.keyEquivalent.isEmpty()) { // Command is this desktop's Control
        action->setShortcut(QKeySequence(QStringLiteral("Ctrl+") + item.keyEquivalent.toUpper()));
        action->setShortcutVisibleInContextMenu(true);
    }
    return action;
}

/// A menu in a bar at the bottom of the screen grows upwards.
QPoint topLeft(const QMenu& menu, const QPoint& where) {
    const QScreen* screen = QGuiApplication::screenAt(where);
    const bool isLow = screen != nullptr && where.y() > screen->geometry().center().y();
    return isLow ? where - QPoint(0, menu.sizeHint().height()) : where;
}

void choose(const MenuItemNative& item) {
    if (const auto action = item.action; action && item.enabled) {
        action();
    }
}

} // namespace

void MenuNative::popUp(const QPoint& where) const {
    PopUpMenu menu;
    std::vector<QAction*> actions;
    for (const auto& item : items) {
        actions.push_back(addTo(menu, *item));
    }
    std::optional<ClickElsewhere> elsewhere;
    if (QGuiApplication::platformName().startsWith(u"wayland")) {
        menu.setFixedSize(menu.sizeHint()); // popups belong to a window, and here is none: a window that is not tiled
    } else {
        elsewhere.emplace(menu);
    }
    const QAction* chosen = menu.exec(topLeft(menu, where));
    elsewhere.reset(); // what is chosen may last
    for (std::size_t index = 0; chosen && index < actions.size(); ++index) {
        if (actions[index] == chosen) {
            choose(*std::shared_ptr<MenuItemNative>(items[index]));
            return;
        }
    }
}

} // namespace Linux

namespace NS {

using namespace Linux;

MenuItem MenuItem::initWithTitle(const std::string& title, std::function<void()> action,
                                 const std::string& keyEquivalent) {
    auto native = std::make_shared<MenuItemNative>();
    native->title = QString::fromStdString(title);
    native->action = std::move(action);
    native->keyEquivalent = QString::fromStdString(keyEquivalent);
    return handle<MenuItem>(std::move(native));
}

MenuItem MenuItem::separatorItem() {
    auto native = std::make_shared<MenuItemNative>();
    native->isSeparator = true;
    return handle<MenuItem>(std::move(native));
}

bool MenuItem::isSeparatorItem() const {
    return native(*this).isSeparator;
}

std::string MenuItem::title() const {
    return native(*this).title.toStdString();
}

std::string MenuItem::keyEquivalent() const {
    return native(*this).keyEquivalent.toStdString();
}

EventModifierFlags MenuItem::keyEquivalentModifierMask() const {
    return EventModifierFlags::Command;
}

void MenuItem::setEnabled(bool enabled) {
    native(*this).enabled = enabled;
}

bool MenuItem::isEnabled() const {
    return native(*this).enabled;
}

Menu Menu::initWithTitle(const std::string&) {
    return handle<Menu>(std::make_shared<MenuNative>());
}

void Menu::addItem(const MenuItem& item) {
    native(*this).items.push_back(shared(item));
}

long Menu::numberOfItems() const {
    return static_cast<long>(native(*this).items.size());
}

MenuItem Menu::itemAtIndex(long index) const {
    if (index < 0 || index >= numberOfItems()) {
        return {};
    }
    return handle<MenuItem>(native(*this).items[static_cast<std::size_t>(index)]);
}

void Menu::performActionForItemAtIndex(long index) {
    if (const auto item = itemAtIndex(index)) {
        choose(*shared(item));
    }
}

} // namespace NS
