#pragma once

#include "Platform/AppKit/View.h"
#include "Platform/Foundation/Flags.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Object.h"

#include <string>

namespace NS {

enum class WindowStyleMask : unsigned long { Titled = 1UL << 0, Closable = 1UL << 1 };
enum class BackingStoreType : unsigned long { Buffered = 2 };
enum class WindowTitleVisibility : long { Visible = 0, Hidden = 1 };

template <>
inline constexpr bool isFlags<WindowStyleMask> = true;

/// A window (NSWindow). It lives as long as a handle to it does.
class Window : public Object {
public:
    static Window initWithContentRect(const Rect& contentRect, WindowStyleMask style, BackingStoreType backing,
                                      bool defer);

    WindowStyleMask styleMask() const;

    /// Whether closing destroys the window although handles remain. The program always says no.
    void setReleasedWhenClosed(bool released);
    bool isReleasedWhenClosed() const;

    void setTitle(const std::string& title);
    std::string title() const;
    void setTitleVisibility(WindowTitleVisibility visibility);
    WindowTitleVisibility titleVisibility() const;
    void setTitlebarAppearsTransparent(bool transparent);
    bool titlebarAppearsTransparent() const;

    void setContentView(const View& view);
    View contentView() const;
    void setContentSize(const Size& size);

    /// The window on the screen, its frame included.
    Rect frame() const;
    /// In the middle of the screen.
    void center();

    void makeKeyAndOrderFront();
    /// In front of the windows of every application, also of the active one.
    void orderFrontRegardless();
    void orderOut();
    bool isVisible() const;

    using Object::Object;
};

} // namespace NS
