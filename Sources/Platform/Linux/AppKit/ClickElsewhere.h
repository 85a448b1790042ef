#pragma once

#include "Platform/Linux/Wayland/LayerSurface.h"

#include <QWidget>
#include <deque>

struct wp_viewport;
struct wp_viewporter;

namespace Linux {

/// Closes a popup window of X in a Wayland session on a click beside it, while this lives: Xwayland tells X's clients
/// nothing of clicks on others' windows. It covers each screen, above windows and panels and below X's popups, and so
/// takes the click, as a menu's grab does. Without a compositor that has layers, it does nothing. Main thread only.
class ClickElsewhere {
public:
    explicit ClickElsewhere(QWidget& popup);

private:
    struct Events;
    struct Screen {
        Proxy<wl_output> output;
        std::unique_ptr<LayerSurface> cover = {};
        Proxy<wp_viewport> viewport = {};
    };

    void found(std::uint32_t name, const char* interface);
    void coverScreens();
    void show(Screen& screen, int width, int height);

    QWidget& popup_;
    WaylandConnection connection_;
    Proxy<wl_compositor> compositor_;
    Proxy<wl_shm> shm_;
    Proxy<wl_proxy> shell_;
    Proxy<wp_viewporter> viewporter_;
    Proxy<wl_seat> seat_;
    Proxy<wl_pointer> pointer_;
    std::deque<Screen> screens_; // each is pointed at
};

} // namespace Linux
