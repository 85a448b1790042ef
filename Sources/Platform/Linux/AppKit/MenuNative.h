#pragma once

#include "Platform/AppKit/Menu.h"
#include "Platform/Linux/Native.h"

#include <QString>
#include <functional>
#include <memory>
#include <vector>

class QPoint;

namespace NS {

struct MenuItemNative : Native {
    bool isSeparator = false;
    QString title;
    std::function<void()> action;
    QString keyEquivalent;
    bool enabled = true;
};

struct MenuNative : Native {
    std::vector<std::shared_ptr<MenuItemNative>> items;

    /// Shows the menu, returns when it has closed and the chosen line, if any, has done its work.
    void popUp(const QPoint& where) const;
};

} // namespace NS
