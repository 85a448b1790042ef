#pragma once

#include "Platform/AppKit/View.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Object.h"

#include <string>

namespace NS {

enum class WindowStyleMask : unsigned long { Titled = 1UL << 0, Closable = 1UL << 1 };
enum class BackingStore : unsigned long { Buffered = 2 };
enum class WindowTitleVisibility : long { Visible = 0, Hidden = 1 };

constexpr WindowStyleMask operator|(WindowStyleMask a, WindowStyleMask b) {
    return static_cast<WindowStyleMask>(static_cast<unsigned long>(a) | static_cast<unsigned long>(b));
}

/// A window (NSWindow). It lives as long as a handle to it does.
class Window : public Object {
public:
    Window() = default;
    Window(const Rect& contentRect, WindowStyleMask style, BackingStore backing, bool defer);

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
    void orderOut();
    bool isVisible() const;

    using Object::Object;
};

} // namespace NS
