#pragma once

#include "Platform/AppKit/Window.h"
#include "Platform/Linux/AppKit/ViewNative.h"
#include "Platform/Linux/Native.h"

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

namespace Linux {

struct WindowNative : Native {
    WindowNative(const Rect& contentRect, WindowStyleMask styleMask);
    /// Its widget goes later: an action of one of the window's buttons may be under way.
    ~WindowNative() override;

    /// Every window made so far; those that are gone have expired.
    static std::vector<std::weak_ptr<WindowNative>>& all();

    void setContentSize(const Size& size) const;

    const WindowStyleMask style;
    QWidget* const widget;
    std::shared_ptr<ViewNative> content;
    std::string title;
    bool releasedWhenClosed = true;
    WindowTitleVisibility titleVisibility = WindowTitleVisibility::Visible;
    bool titlebarTransparent = false;
};

template <>
struct NativeOf<Window> : std::type_identity<WindowNative> {};

} // namespace Linux
