#include "Platform/Linux/Power/WaylandInhibitor.h"

#include "Platform/Linux/Wayland/LayerShell.h"
#include "idle-inhibit-unstable-v1.h"

namespace Linux {

WaylandInhibitor::WaylandInhibitor()
    : IdleInhibitor("zwp_idle_inhibit_manager_v1"),
      connection_({.global = [this](std::uint32_t name, const char* interface) { found(name, interface); },
                   .globalsKnown =
                       [this] {
                           areGlobalsKnown_ = true;
                           if (isWanted()) {
                               show();
                           }
                       },
                   .lost = [this] { lost(); }}) {}

void WaylandInhibitor::found(std::uint32_t name, const char* interface) {
    connection_.bind(compositor_, wl_compositor_interface, name, interface);
    connection_.bind(shm_, wl_shm_interface, name, interface);
    connection_.bind(shell_, LayerShell::shell, name, interface);
    connection_.bind(manager_, zwp_idle_inhibit_manager_v1_interface, name, interface);
    const bool isScreen = std::strcmp(interface, wl_output_interface.name) == 0;
    if (isScreen && areGlobalsKnown_ && isWanted() && !surface_) { // there was none to show it on
        show();
    }
}

// The compositor drops what this connection held.
void WaylandInhibitor::lost() {
    qCDebug(powerLog) << "the Wayland connection is lost";
    inhibitor_.reset();
    surface_.reset();
    manager_.reset();
    shell_.reset();
    shm_.reset();
    compositor_.reset();
    connection_.close();
    areGlobalsKnown_ = false;
    if (isWanted()) {
        setState(State::Refused);
    }
}

void WaylandInhibitor::ask(const QString&, const QString&) {
    if (!connection_.open()) {
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
    surface_ = std::make_unique<LayerSurface>(
        compositor_.get(), shell_.get(), LayerShell::backgroundLayer, nullptr,
        LayerSurface::Listener{.configured = [this](int, int) { configured(); }, .closed = [this] { closed(); }});
    surface_->ignoreInput(compositor_.get());
    surface_->setSize(1, 1);
    surface_->setAnchor(LayerShell::topAndLeft);
    surface_->commit();
    connection_.flush();
}

void WaylandInhibitor::hide() {
    if (inhibitor_) {
        zwp_idle_inhibitor_v1_destroy(inhibitor_.release());
    }
    surface_.reset();
    if (connection_.isOpen()) {
        connection_.flush();
    }
}

void WaylandInhibitor::configured() {
    if (!surface_->show(shm_.get())) {
        hide();
        return setState(State::Refused);
    }
    if (!inhibitor_) {
        inhibitor_.reset(zwp_idle_inhibit_manager_v1_create_inhibitor(manager_.get(), surface_->surface()));
    }
    connection_.flush();
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

std::optional<pollfd> WaylandInhibitor::awaited() const {
    if (!isAsked()) {
        return std::nullopt;
    }
    return pollfd{.fd = connection_.descriptor(), .events = POLLIN, .revents = 0};
}

} // namespace Linux
