#pragma once

#include <wayland-client-core.h>

// The messages of the layer shell that are used here, in their own order: no package of Debian 12 describes them.
// https://wayland.app/protocols/wlr-layer-shell-unstable-v1
namespace Linux::LayerShell {

extern const wl_interface shell;
extern const wl_interface surface;

// Requests, by number.
constexpr unsigned getLayerSurface = 0;
constexpr unsigned setSize = 0;
constexpr unsigned setAnchor = 1;
constexpr unsigned setExclusiveZone = 2;
constexpr unsigned ackConfigure = 6;
constexpr unsigned destroy = 7;

constexpr unsigned backgroundLayer = 0;
constexpr unsigned topLayer = 2;

constexpr unsigned topAndLeft = 1 | 4;
constexpr unsigned allEdges = 1 | 2 | 4 | 8;

/// A surface's events.
struct Listener {
    void (*configure)(void* data, wl_proxy* surface, unsigned serial, unsigned width, unsigned height);
    void (*closed)(void* data, wl_proxy* surface);
};

} // namespace Linux::LayerShell
