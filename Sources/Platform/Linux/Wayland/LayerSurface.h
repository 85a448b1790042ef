#pragma once

#include "Platform/Linux/Wayland/WaylandConnection.h"

namespace Linux {

/// A transparent surface in one of the layers that a screen is made of. Main thread only.
class LayerSurface {
public:
    /// What the owner is told. Both may destroy the surface.
    struct Listener {
        std::function<void(int width, int height)> configured; // it can be shown, in that size
        std::function<void()> closed;                          // its screen went
    };

    /// `layer` as in LayerShell.h. Without an output, the compositor chooses.
    LayerSurface(wl_compositor* compositor, wl_proxy* shell, unsigned layer, wl_output* output, Listener listener);
    LayerSurface(const LayerSurface&) = delete;
    LayerSurface& operator=(const LayerSurface&) = delete;
    ~LayerSurface();

    wl_surface* surface() const { return surface_; }

    // Requests; they count from the next commit on.
    void setSize(unsigned width, unsigned height); ///< 0: as the anchors have it
    void setAnchor(unsigned edges);
    void ignorePanels();
    void ignoreInput(wl_compositor* compositor);
    void commit();

    /// Shows one transparent pixel on it; false when there is no memory for it.
    bool show(wl_shm* memory);

private:
    struct Events;

    const Listener listener_;
    wl_surface* const surface_;
    wl_proxy* const layerSurface_;
    Proxy<wl_buffer> pixel_;
};

} // namespace Linux
