#include "Platform/Linux/Wayland/LayerSurface.h"

#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Wayland/LayerShell.h"

#include <sys/mman.h>
#include <unistd.h>

namespace Linux {

namespace {

Proxy<wl_buffer> transparentPixel(wl_shm* memory) {
    constexpr int bytes = 4; // all zero
    const Descriptor file(memfd_create("pixel", MFD_CLOEXEC));
    if (!file || ftruncate(file.number(), bytes) != 0) {
        return nullptr;
    }
    wl_shm_pool* const pool = wl_shm_create_pool(memory, file.number(), bytes);
    Proxy<wl_buffer> pixel(wl_shm_pool_create_buffer(pool, 0, 1, 1, bytes, WL_SHM_FORMAT_ARGB8888));
    wl_shm_pool_destroy(pool);
    return pixel;
}

} // namespace

/// The callbacks that libwayland takes.
struct LayerSurface::Events {
    static void configure(void* data, wl_proxy* layerSurface, unsigned serial, unsigned width, unsigned height) {
        wl_proxy_marshal_flags(layerSurface, LayerShell::ackConfigure, nullptr, 1, 0, serial);
        const auto configured = listener(data).configured; // which may destroy the surface
        configured(static_cast<int>(width), static_cast<int>(height));
    }

    static void closed(void* data, wl_proxy*) {
        const auto closed = listener(data).closed;
        closed();
    }

    static const Listener& listener(void* data) { return static_cast<LayerSurface*>(data)->listener_; }

    static constexpr LayerShell::Listener callbacks = {configure, closed};
};

LayerSurface::LayerSurface(wl_compositor* compositor, wl_proxy* shell, unsigned layer, wl_output* output,
                           Listener listener)
    : listener_(std::move(listener)), surface_(wl_compositor_create_surface(compositor)),
      layerSurface_(wl_proxy_marshal_flags(shell, LayerShell::getLayerSurface, &LayerShell::surface, 1, 0, nullptr,
                                           surface_, output, layer, "vantorel")) {
    wl_proxy_add_listener(layerSurface_,
                          reinterpret_cast<void (**)()>(const_cast<LayerShell::Listener*>(&Events::callbacks)), this);
}

LayerSurface::~LayerSurface() {
    wl_proxy_marshal_flags(layerSurface_, LayerShell::destroy, nullptr, 1, WL_MARSHAL_FLAG_DESTROY);
    wl_surface_destroy(surface_);
    if (pixel_) {
        wl_buffer_destroy(pixel_.release());
    }
}

void LayerSurface::setSize(unsigned width, unsigned height) {
    wl_proxy_marshal_flags(layerSurface_, LayerShell::setSize, nullptr, 1, 0, width, height);
}

void LayerSurface::setAnchor(unsigned edges) {
    wl_proxy_marshal_flags(layerSurface_, LayerShell::setAnchor, nullptr, 1, 0, edges);
}

void LayerSurface::ignorePanels() {
    wl_proxy_marshal_flags(layerSurface_, LayerShell::setExclusiveZone, nullptr, 1, 0, -1);
}

void LayerSurface::ignoreInput(wl_compositor* compositor) {
    wl_region* const nothing = wl_compositor_create_region(compositor);
    wl_surface_set_input_region(surface_, nothing);
    wl_region_destroy(nothing);
}

void LayerSurface::commit() {
    wl_surface_commit(surface_);
}

bool LayerSurface::show(wl_shm* memory) {
    if (!pixel_) {
        pixel_ = transparentPixel(memory);
    }
    if (!pixel_) {
        return false;
    }
    wl_surface_attach(surface_, pixel_.get(), 0, 0);
    wl_surface_damage(surface_, 0, 0, 1, 1);
    commit();
    return true;
}

} // namespace Linux
