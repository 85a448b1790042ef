#include "Platform/Linux/Wayland/WaylandConnection.h"

#include "Platform/Linux/AppKit/DisplayServer.h"

#include <poll.h>
#include <utility>

namespace Linux {

/// The callbacks that libwayland takes.
struct WaylandConnection::Events {
    static WaylandConnection& self(void* data) { return *static_cast<WaylandConnection*>(data); }

    static void global(void* data, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t) {
        self(data).listener_.global(name, interface);
    }

    static void globalRemoved(void*, wl_registry*, std::uint32_t) {}

    static void globalsDone(void* data, wl_callback*, std::uint32_t) {
        self(data).globalsDone_.reset();
        self(data).listener_.globalsKnown();
    }

    static constexpr wl_registry_listener registry = {global, globalRemoved};
    static constexpr wl_callback_listener done = {globalsDone};
};

WaylandConnection::~WaylandConnection() {
    close();
}

bool WaylandConnection::open() {
    if (display_) {
        return true;
    }
    display_ = connectToWayland();
    if (!display_) {
        return false;
    }
    notifier_ = std::make_unique<QSocketNotifier>(descriptor(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { process(); });
    registry_.reset(wl_display_get_registry(display_));
    wl_registry_add_listener(registry_.get(), &Events::registry, this);
    globalsDone_.reset(wl_display_sync(display_));
    wl_callback_add_listener(globalsDone_.get(), &Events::done, this);
    flush();
    return true;
}

void WaylandConnection::close() {
    if (!display_) {
        return;
    }
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater(); // it may be calling
    globalsDone_.reset();
    registry_.reset();
    wl_display_disconnect(std::exchange(display_, nullptr));
}

void WaylandConnection::process() {
    if (display_ && !dispatch()) {
        listener_.lost();
    }
}

/// False when the connection is lost.
bool WaylandConnection::dispatch() {
    while (wl_display_prepare_read(display_) != 0) {
        if (wl_display_dispatch_pending(display_) < 0) {
            return false;
        }
    }
    flush();
    pollfd readable = {.fd = descriptor(), .events = POLLIN, .revents = 0};
    if (poll(&readable, 1, 0) > 0) {
        wl_display_read_events(display_);
    } else {
        wl_display_cancel_read(display_);
    }
    return wl_display_dispatch_pending(display_) >= 0;
}

} // namespace Linux
