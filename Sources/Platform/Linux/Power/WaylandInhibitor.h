#pragma once

#include "Platform/Linux/Power/IdleInhibitor.h"

#include <QSocketNotifier>
#include <cstdint>
#include <memory>
#include <wayland-client.h>

struct zwp_idle_inhibit_manager_v1;
struct zwp_idle_inhibitor_v1;

namespace Linux {

/// The Wayland compositor's own idle inhibitor, on a surface of one transparent pixel in the background: wlroots would
/// take any surface, KWin takes only one that is shown. On a connection of its own, since Qt's may be to an X server.
/// https://wayland.app/protocols/idle-inhibit-unstable-v1
class WaylandInhibitor final : public IdleInhibitor {
public:
    WaylandInhibitor() : IdleInhibitor("zwp_idle_inhibit_manager_v1") {}

    void prepare() override { connect(); }
    void ask(const QString& application, const QString& reason) override;
    void release() override;
    std::optional<pollfd> awaited() const override;
    void process() override;

private:
    struct Events;

    bool connect();
    void disconnect();
    void found(std::uint32_t name, const char* interface);
    bool canInhibit() const { return compositor_ && shm_ && shell_ && manager_; }
    void show();
    void placeInBackground();
    void hide();
    void configured(std::uint32_t serial);
    void closed();
    bool attachPixel();
    bool dispatch();

    wl_display* display_ = nullptr;
    std::unique_ptr<QSocketNotifier> notifier_;
    bool areGlobalsKnown_ = false;
    wl_registry* registry_ = nullptr;
    wl_compositor* compositor_ = nullptr;
    wl_shm* shm_ = nullptr;
    wl_proxy* shell_ = nullptr;
    zwp_idle_inhibit_manager_v1* manager_ = nullptr;
    wl_surface* surface_ = nullptr;
    wl_proxy* layerSurface_ = nullptr;
    wl_buffer* pixel_ = nullptr;
    zwp_idle_inhibitor_v1* inhibitor_ = nullptr;
};

} // namespace Linux
