#pragma once

#include "Platform/AppKit/Menu.h"
#include "Platform/Linux/Native.h"

#include <QString>
#include <functional>
#include <memory>
#include <vector>

class QPoint;

namespace Linux {

struct MenuItemNative : Native {
    bool isSeparator = false;
    QString title;
    std::function<void()> action;
    QString keyEquivalent;
    bool enabled = true;
};

template <>
struct NativeOf<MenuItem> : std::type_identity<MenuItemNative> {};

struct MenuNative : Native {
    std::vector<std::shared_ptr<MenuItemNative>> items;

    /// Shows the menu, returns when it has closed and the chosen line, if any, has done its work.
    void popUp(const QPoint& where) const;
};

template <>
struct NativeOf<Menu> : std::type_identity<MenuNative> {};

} // namespace Linux
