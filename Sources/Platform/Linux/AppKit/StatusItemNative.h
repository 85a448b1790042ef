#pragma once

#include "Platform/AppKit/StatusItem.h"
#include "Platform/Linux/AppKit/ImageNative.h"
#include "Platform/Linux/Native.h"
#include "Platform/Linux/Seam.h"

#include <QPoint>
#include <QString>
#include <functional>
#include <memory>

namespace Linux {

struct StatusItemNative : Native, std::enable_shared_from_this<StatusItemNative> {
    double length = 0;
    StatusItemBehavior behavior = StatusItemBehavior::None;
    std::shared_ptr<ImageNative> image;
    QString toolTip;
    std::function<void()> action;
    EventMask mask = EventMask::LeftMouseUp;
    Menu menu;
    std::unique_ptr<StatusItemPresenter> presenter;

    /// The user released a mouse button over the item. Runs the action when the mask has the event. `where` is on the
    /// screen, in logical pixels: the menu opens there.
    void mouseUp(const Event& event, const QPoint& where);
    /// Opens the menu where the last click was and returns when it has closed; without a menu, runs the action.
    void performClick();
    /// The menu that a right click opens now, not opened: for a bar that shows menus itself. Absent when it opens none.
    Menu menuOfRightClick();

private:
    void act(const Event& event);

    QPoint lastClick_;
    Menu* asked_ = nullptr; // where performClick leaves the menu instead of opening it
};

template <>
struct NativeOf<StatusItem> : std::type_identity<StatusItemNative> {};

template <>
struct NativeOf<StatusBarButton> : NativeOf<StatusItem> {};

} // namespace Linux
