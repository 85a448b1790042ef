#include "Platform/Linux/Power/WaylandInhibitor.h"

#include "Platform/Linux/AppKit/DisplayServer.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Power/LayerShell.h"
#include "idle-inhibit-unstable-v1.h"

#include <cstring>
#include <sys/mman.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace Linux {

/// The callbacks that libwayland takes.
struct WaylandInhibitor::Events {
    static WaylandInhibitor& self(void* data) { return *static_cast<WaylandInhibitor*>(data); }

    static void global(void* data, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t) {
        self(data).found(name, interface);
    }

    static void globalRemoved(void*, wl_registry*, std::uint32_t) {}

    static void globalsDone(void* data, wl_callback* callback, std::uint32_t) {
        wl_callback_destroy(callback);
        self(data).areGlobalsKnown_ = true;
        if (self(data).isWanted()) {
            self(data).show();
        }
    }

    static void configure(void* data, wl_proxy*, unsigned serial, unsigned, unsigned) { self(data).configured(serial); }

    static void closed(void* data, wl_proxy*) { self(data).closed(); }

    static constexpr wl_registry_listener registry = {global, globalRemoved};
    static constexpr wl_callback_listener done = {globalsDone};
    static constexpr LayerShell::Listener layerSurface = {configure, closed};
};

bool WaylandInhibitor::connect() {
    if (display_) {
        return true;
    }
    display_ = connectToWayland();
    if (!display_) {
        return false;
    }
    notifier_ = std::make_unique<QSocketNotifier>(wl_display_get_fd(display_), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { process(); });
    registry_ = wl_display_get_registry(display_);
    wl_registry_add_listener(registry_, &Events::registry, this);
    wl_callback_add_listener(wl_display_sync(display_), &Events::done, this);
    wl_display_flush(display_);
    return true;
}

// The compositor drops what this connection held.
void WaylandInhibitor::disconnect() {
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater(); // it may be calling
    const auto destroy = [](auto*& proxy) {
        if (proxy) {
            wl_proxy_destroy(reinterpret_cast<wl_proxy*>(std::exchange(proxy, nullptr)));
        }
    };
    destroy(inhibitor_);
    destroy(pixel_);
    destroy(layerSurface_);
    destroy(surface_);
    destroy(manager_);
    destroy(shell_);
    destroy(shm_);
    destroy(compositor_);
    destroy(registry_);
    wl_display_disconnect(std::exchange(display_, nullptr));
    areGlobalsKnown_ = false;
}

void WaylandInhibitor::found(std::uint32_t name, const char* interface) {
    const auto bind = [&](auto*& proxy, const wl_interface& known) {
        if (!proxy && std::strcmp(interface, known.name) == 0) {
            proxy = static_cast<std::remove_reference_t<decltype(proxy)>>(wl_registry_bind(registry_, name, &known, 1));
        }
    };
    bind(compositor_, wl_compositor_interface);
    bind(shm_, wl_shm_interface);
    bind(shell_, LayerShell::shell);
    bind(manager_, zwp_idle_inhibit_manager_v1_interface);
    const bool isScreen = std::strcmp(interface, wl_output_interface.name) == 0;
    if (isScreen && areGlobalsKnown_ && isWanted() && !surface_) { // there was none to show it on
        show();
    }
}

void WaylandInhibitor::ask(const QString&, const QString&) {
    if (!connect()) {
        return setState(State::Refused);
    }
    setState(State::Asked);
    if (areGlobalsKnown_) {
        show();
    }
}

void WaylandInhibitor::release() {
    hide();
    setState(State::Released);
}

void WaylandInhibitor::show() {
    if (!canInhibit()) {
        return setState(State::Refused);
    }
    setState(State::Asked);
    surface_ = wl_compositor_create_surface(compositor_);
    wl_region* const nothing = wl_compositor_create_region(compositor_);
    wl_surface_set_input_region(surface_, nothing);
    wl_region_destroy(nothing);
    placeInBackground();
    wl_surface_commit(surface_);
    wl_display_flush(display_);
}

void WaylandInhibitor::placeInBackground() {
    layerSurface_ = wl_proxy_marshal_flags(shell_, LayerShell::getLayerSurface, &LayerShell::surface, 1, 0, nullptr,
                                           surface_, nullptr, LayerShell::backgroundLayer, "idle-inhibitor");
    wl_proxy_add_listener(
        layerSurface_, reinterpret_cast<void (**)()>(const_cast<LayerShell::Listener*>(&Events::layerSurface)), this);
    wl_proxy_marshal_flags(layerSurface_, LayerShell::setSize, nullptr, 1, 0, 1, 1);
    wl_proxy_marshal_flags(layerSurface_, LayerShell::setAnchor, nullptr, 1, 0, LayerShell::topAndLeft);
}

void WaylandInhibitor::hide() {
    if (inhibitor_) {
        zwp_idle_inhibitor_v1_destroy(std::exchange(inhibitor_, nullptr));
    }
    if (layerSurface_) {
        wl_proxy_marshal_flags(std::exchange(layerSurface_, nullptr), LayerShell::destroy, nullptr, 1,
                               WL_MARSHAL_FLAG_DESTROY);
    }
    if (surface_) {
        wl_surface_destroy(std::exchange(surface_, nullptr));
    }
    if (pixel_) {
        wl_buffer_destroy(std::exchange(pixel_, nullptr));
    }
    if (display_) {
        wl_display_flush(display_);
    }
}

void WaylandInhibitor::configured(std::uint32_t serial) {
    wl_proxy_marshal_flags(layerSurface_, LayerShell::ackConfigure, nullptr, 1, 0, serial);
    if (!pixel_ && !attachPixel()) {
        hide();
        return setState(State::Refused);
    }
    wl_surface_commit(surface_);
    if (!inhibitor_) {
        inhibitor_ = zwp_idle_inhibit_manager_v1_create_inhibitor(manager_, surface_);
    }
    wl_display_flush(display_);
    setState(State::Granted);
}

// Its screen went: on to another, unless that was the last.
void WaylandInhibitor::closed() {
    const bool wasShown = inhibitor_ != nullptr;
    hide();
    if (wasShown) {
        show();
    } else {
        setState(State::Refused);
    }
}

bool WaylandInhibitor::attachPixel() {
    constexpr int bytes = 4; // all zero: transparent
    const Descriptor memory(memfd_create("pixel", MFD_CLOEXEC));
    if (!memory || ftruncate(memory.number(), bytes) != 0) {
        return false;
    }
    wl_shm_pool* const pool = wl_shm_create_pool(shm_, memory.number(), bytes);
    pixel_ = wl_shm_pool_create_buffer(pool, 0, 1, 1, bytes, WL_SHM_FORMAT_ARGB8888);
    wl_shm_pool_destroy(pool);
    wl_surface_attach(surface_, pixel_, 0, 0);
    wl_surface_damage(surface_, 0, 0, 1, 1);
    return true;
}

std::optional<pollfd> WaylandInhibitor::awaited() const {
    if (!isAsked()) {
        return std::nullopt;
    }
    return pollfd{.fd = wl_display_get_fd(display_), .events = POLLIN, .revents = 0};
}

void WaylandInhibitor::process() {
    if (display_ && !dispatch()) {
        qCDebug(powerLog) << "the Wayland connection is lost";
        disconnect();
        if (isWanted()) {
            setState(State::Refused);
        }
    }
}

/// Handles what has come, without waiting. False when the connection is lost.
bool WaylandInhibitor::dispatch() {
    while (wl_display_prepare_read(display_) != 0) {
        if (wl_display_dispatch_pending(display_) < 0) {
            return false;
        }
    }
    wl_display_flush(display_);
    pollfd readable = {.fd = wl_display_get_fd(display_), .events = POLLIN, .revents = 0};
    if (poll(&readable, 1, 0) > 0) {
        wl_display_read_events(display_);
    } else {
        wl_display_cancel_read(display_);
    }
    return wl_display_dispatch_pending(display_) >= 0;
}

} // namespace Linux
