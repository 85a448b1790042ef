#pragma once

#include "Platform/Linux/Bar/SystemTray.h"

#include <QImage>
#include <QRect>
#include <QSize>
#include <QString>
#include <cstddef>
#include <cstdint>

namespace Linux {

/// An icon's own X window, for a tray to take in by XEMBED
/// (https://specifications.freedesktop.org/xembed-spec/latest/). Neither a widget nor a QWindow can have the visual
/// that the tray asks for.
class TrayWindow {
public:
    TrayWindow(const SystemTray& tray, const QString& title);
    ~TrayWindow();
    TrayWindow(const TrayWindow&) = delete;
    TrayWindow& operator=(const TrayWindow&) = delete;

    xcb_window_t id() const { return id_; }
    /// In real pixels.
    QSize size() const { return size_; }
    void setSize(const QSize& size) { size_ = size; }

    /// What is seen around the icon; null while that cannot be told, as before the window shows.
    QImage surroundings() const;
    /// What the icon is to be drawn on: nothing where the window is see-through, the panel where it is not. Null as
    /// above.
    QImage canvas() const;
    void show(const QImage& picture) const;

private:
    void create();
    void describe(const SystemTray& tray, const QString& title) const;
    void setProperty(xcb_atom_t name, xcb_atom_t type, std::uint8_t format, const void* items, std::size_t count) const;
    QImage grab(xcb_window_t window, const QRect& rect) const;

    xcb_connection_t* connection_;
    const xcb_screen_t& screen_;
    TrayVisual visual_;
    xcb_colormap_t colormap_;
    xcb_window_t id_;
    xcb_gcontext_t pen_;
    QSize size_;
};

} // namespace Linux
