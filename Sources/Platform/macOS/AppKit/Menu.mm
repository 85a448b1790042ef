#include "Platform/AppKit/Menu.h"

#include "Platform/macOS/AppKit/ActionTarget.h"
#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

MenuItem MenuItem::initWithTitle(const std::string& title, std::function<void()> action,
                                 const std::string& keyEquivalent) {
    NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:toNSString(title)
                                                  action:nil
                                           keyEquivalent:toNSString(keyEquivalent)];
    if (action) {
        setActionFunction(item, std::move(action));
    }
    return handle<MenuItem>(item);
}

MenuItem MenuItem::separatorItem() {
    return handle<MenuItem>([NSMenuItem separatorItem]);
}

bool MenuItem::isSeparatorItem() const {
    return [object<NSMenuItem>(*this) isSeparatorItem];
}

std::string MenuItem::title() const {
    return toString([object<NSMenuItem>(*this) title]);
}

std::string MenuItem::keyEquivalent() const {
    return toString([object<NSMenuItem>(*this) keyEquivalent]);
}

EventModifierFlags MenuItem::keyEquivalentModifierMask() const {
    return static_cast<EventModifierFlags>([object<NSMenuItem>(*this) keyEquivalentModifierMask]);
}

void MenuItem::setEnabled(bool enabled) {
    [object<NSMenuItem>(*this) setEnabled:enabled];
}

bool MenuItem::isEnabled() const {
    return [object<NSMenuItem>(*this) isEnabled];
}

Menu Menu::initWithTitle(const std::string& title) {
    return handle<Menu>([[NSMenu alloc] initWithTitle:toNSString(title)]);
}

void Menu::addItem(const MenuItem& item) {
    [object<NSMenu>(*this) addItem:object<NSMenuItem>(item)];
}

long Menu::numberOfItems() const {
    return [object<NSMenu>(*this) numberOfItems];
}

MenuItem Menu::itemAtIndex(long index) const {
    // AppKit raises an exception for a line that is not there.
    if (index < 0 || index >= numberOfItems()) {
        return MenuItem();
    }
    return handle<MenuItem>([object<NSMenu>(*this) itemAtIndex:index]);
}

void Menu::performActionForItemAtIndex(long index) {
    [object<NSMenu>(*this) performActionForItemAtIndex:index];
}

} // namespace NS
