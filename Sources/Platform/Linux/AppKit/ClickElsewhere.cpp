#include "Platform/Linux/AppKit/ClickElsewhere.h"

#include "Platform/Linux/Wayland/LayerShell.h"
#include "viewporter.h"

namespace Linux {

/// The callbacks that libwayland takes.
struct ClickElsewhere::Events {
    static void capabilities(void* data, wl_seat* seat, std::uint32_t capabilities) {
        auto& pointer = static_cast<ClickElsewhere*>(data)->pointer_;
        if (!pointer && (capabilities & WL_SEAT_CAPABILITY_POINTER) != 0) {
            pointer.reset(wl_seat_get_pointer(seat));
            wl_pointer_add_listener(pointer.get(), &Events::pointerListener, data);
        }
    }

    static void enter(void*, wl_pointer*, std::uint32_t, wl_surface*, wl_fixed_t, wl_fixed_t) {}
    static void leave(void*, wl_pointer*, std::uint32_t, wl_surface*) {}
    static void motion(void*, wl_pointer*, std::uint32_t, wl_fixed_t, wl_fixed_t) {}
    static void axis(void*, wl_pointer*, std::uint32_t, std::uint32_t, wl_fixed_t) {}

    static void button(void* data, wl_pointer*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t state) {
        if (state == WL_POINTER_BUTTON_STATE_PRESSED) {
            static_cast<ClickElsewhere*>(data)->popup_.close();
        }
    }

    // Later versions have more events.
    static constexpr wl_seat_listener seatListener = {.capabilities = capabilities, .name = nullptr};
    static constexpr wl_pointer_listener pointerListener = [] {
        wl_pointer_listener listener = {};
        listener.enter = enter;
        listener.leave = leave;
        listener.motion = motion;
        listener.button = button;
        listener.axis = axis;
        return listener;
    }();
};

ClickElsewhere::ClickElsewhere(QWidget& popup)
    : popup_(popup),
      connection_({.global = [this](std::uint32_t name, const char* interface) { found(name, interface); },
                   .globalsKnown = [this] { coverScreens(); },
                   .lost = [this] { popup_.close(); }}) {
    connection_.open();
}

void ClickElsewhere::found(std::uint32_t name, const char* interface) {
    connection_.bind(compositor_, wl_compositor_interface, name, interface);
    connection_.bind(shm_, wl_shm_interface, name, interface);
    connection_.bind(shell_, LayerShell::shell, name, interface);
    connection_.bind(viewporter_, wp_viewporter_interface, name, interface);
    if (connection_.bind(seat_, wl_seat_interface, name, interface)) {
        wl_seat_add_listener(seat_.get(), &Events::seatListener, this);
    }
    if (Proxy<wl_output> output; connection_.bind(output, wl_output_interface, name, interface)) {
        screens_.push_back({.output = std::move(output)});
    }
}

void ClickElsewhere::coverScreens() {
    if (!compositor_ || !shm_ || !shell_ || !viewporter_) {
        return;
    }
    for (auto& screen : screens_) {
        screen.cover = std::make_unique<LayerSurface>(
            compositor_.get(), shell_.get(), LayerShell::topLayer, screen.output.get(),
            LayerSurface::Listener{
                .configured = [this, &screen](int width, int height) { show(screen, width, height); },
                .closed = [&screen] { screen.cover.reset(); }});
        screen.cover->setSize(0, 0);
        screen.cover->setAnchor(LayerShell::allEdges);
        screen.cover->ignorePanels();
        screen.cover->commit();
    }
    connection_.flush();
}

void ClickElsewhere::show(Screen& screen, int width, int height) {
    if (!screen.viewport) {
        screen.viewport.reset(wp_viewporter_get_viewport(viewporter_.get(), screen.cover->surface()));
    }
    wp_viewport_set_destination(screen.viewport.get(), width, height);
    screen.cover->show(shm_.get());
    connection_.flush();
}

} // namespace Linux
