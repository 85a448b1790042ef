#pragma once

#include "Platform/Linux/Power/IdleInhibitor.h"
#include "Platform/Linux/Wayland/LayerSurface.h"

struct zwp_idle_inhibit_manager_v1;
struct zwp_idle_inhibitor_v1;

namespace Linux {

/// The Wayland compositor's own idle inhibitor, on a surface of one transparent pixel in the background: wlroots would
/// take any surface, KWin takes only one that is shown.
/// https://wayland.app/protocols/idle-inhibit-unstable-v1
class WaylandInhibitor final : public IdleInhibitor {
public:
    WaylandInhibitor();

    void prepare() override { connection_.open(); }
    void ask(const QString& application, const QString& reason) override;
    void release() override;
    std::optional<pollfd> awaited() const override;
    void process() override { connection_.process(); }

private:
    void found(std::uint32_t name, const char* interface);
    void lost();
    bool canInhibit() const { return compositor_ && shm_ && shell_ && manager_; }
    void show();
    void hide();
    void configured();
    void closed();

    WaylandConnection connection_;
    bool areGlobalsKnown_ = false;
    Proxy<wl_compositor> compositor_;
    Proxy<wl_shm> shm_;
    Proxy<wl_proxy> shell_;
    Proxy<zwp_idle_inhibit_manager_v1> manager_;
    std::unique_ptr<LayerSurface> surface_;
    Proxy<zwp_idle_inhibitor_v1> inhibitor_;
};

} // namespace Linux
