#include "Platform/Linux/Wayland/LayerShell.h"

#include <wayland-client-protocol.h>

namespace Linux::LayerShell {

namespace {

const wl_interface* getLayerSurfaceTypes[] = {&surface, &wl_surface_interface, &wl_output_interface, nullptr, nullptr};
const wl_interface* noTypes[] = {nullptr, nullptr, nullptr, nullptr};

const wl_message shellRequests[] = {{"get_layer_surface", "no?ous", getLayerSurfaceTypes}};

const wl_message surfaceRequests[] = {
    {"set_size", "uu", noTypes},
    {"set_anchor", "u", noTypes},
    {"set_exclusive_zone", "i", noTypes},
    {"set_margin", "iiii", noTypes},
    {"set_keyboard_interactivity", "u", noTypes},
    {"get_popup", "o", noTypes},
    {"ack_configure", "u", noTypes},
    {"destroy", "", noTypes},
};

const wl_message surfaceEvents[] = {
    {"configure", "uuu", noTypes},
    {"closed", "", noTypes},
};

} // namespace

const wl_interface shell = {"zwlr_layer_shell_v1", 1, 1, shellRequests, 0, nullptr};
const wl_interface surface = {"zwlr_layer_surface_v1", 1, 8, surfaceRequests, 2, surfaceEvents};

} // namespace Linux::LayerShell
