#include "Platform/AppKit/Window.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<NSUInteger>(WindowStyleMask::Titled) == NSWindowStyleMaskTitled);
static_assert(static_cast<NSUInteger>(WindowStyleMask::Closable) == NSWindowStyleMaskClosable);
static_assert(static_cast<NSUInteger>(BackingStoreType::Buffered) == NSBackingStoreBuffered);
static_assert(static_cast<long>(WindowTitleVisibility::Visible) == NSWindowTitleVisible);
static_assert(static_cast<long>(WindowTitleVisibility::Hidden) == NSWindowTitleHidden);

Window Window::initWithContentRect(const Rect& contentRect, WindowStyleMask style, BackingStoreType backing,
                                   bool defer) {
    return handle<Window>([[NSWindow alloc] initWithContentRect:toNSRect(contentRect)
                                                      styleMask:static_cast<NSWindowStyleMask>(style)
                                                        backing:static_cast<NSBackingStoreType>(backing)
                                                          defer:defer]);
}

WindowStyleMask Window::styleMask() const {
    return static_cast<WindowStyleMask>([object<NSWindow>(*this) styleMask]);
}

void Window::setReleasedWhenClosed(bool released) {
    [object<NSWindow>(*this) setReleasedWhenClosed:released];
}

bool Window::isReleasedWhenClosed() const {
    return [object<NSWindow>(*this) isReleasedWhenClosed];
}

void Window::setTitle(const std::string& title) {
    [object<NSWindow>(*this) setTitle:toNSString(title)];
}

std::string Window::title() const {
    return toString([object<NSWindow>(*this) title]);
}

void Window::setTitleVisibility(WindowTitleVisibility visibility) {
    [object<NSWindow>(*this) setTitleVisibility:static_cast<NSWindowTitleVisibility>(visibility)];
}

WindowTitleVisibility Window::titleVisibility() const {
    return static_cast<WindowTitleVisibility>([object<NSWindow>(*this) titleVisibility]);
}

void Window::setTitlebarAppearsTransparent(bool transparent) {
    [object<NSWindow>(*this) setTitlebarAppearsTransparent:transparent];
}

bool Window::titlebarAppearsTransparent() const {
    return [object<NSWindow>(*this) titlebarAppearsTransparent];
}

void Window::setContentView(const View& view) {
    [object<NSWindow>(*this) setContentView:object<NSView>(view)];
}

View Window::contentView() const {
    return handle<View>([object<NSWindow>(*this) contentView]);
}

void Window::setContentSize(const Size& size) {
    [object<NSWindow>(*this) setContentSize:toNSSize(size)];
}

Rect Window::frame() const {
    return toRect([object<NSWindow>(*this) frame]);
}

void Window::center() {
    [object<NSWindow>(*this) center];
}

void Window::makeKeyAndOrderFront() {
    [object<NSWindow>(*this) makeKeyAndOrderFront:nil];
}

void Window::orderFrontRegardless() {
    [object<NSWindow>(*this) orderFrontRegardless];
}

void Window::orderOut() {
    [object<NSWindow>(*this) orderOut:nil];
}

bool Window::isVisible() const {
    return [object<NSWindow>(*this) isVisible];
}

} // namespace NS
