#pragma once

#include <QSocketNotifier>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <wayland-client.h>

namespace Linux {

/// Forgets an object on our side. What the compositor has of it ends with the connection at the latest.
struct ForgetProxy {
    template <class T>
    void operator()(T* proxy) const {
        wl_proxy_destroy(reinterpret_cast<wl_proxy*>(proxy));
    }
};

template <class T>
using Proxy = std::unique_ptr<T, ForgetProxy>;

/// A connection of our own to the session's Wayland compositor, since Qt's may be to an X server. Its owner forgets all
/// objects before the connection ends. Main thread only.
class WaylandConnection {
public:
    /// What the owner is told, as the events come.
    struct Listener {
        std::function<void(std::uint32_t name, const char* interface)> global;
        std::function<void()> globalsKnown; // those that there were at the start
        std::function<void()> lost;         // may close the connection
    };

    explicit WaylandConnection(Listener listener) : listener_(std::move(listener)) {}
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;
    ~WaylandConnection();

    /// True also when it was open already.
    bool open();
    void close();
    bool isOpen() const { return display_ != nullptr; }
    int descriptor() const { return wl_display_get_fd(display_); }

    /// Takes the first global of an interface, in its first version. Whether this was it.
    template <class T>
    bool bind(Proxy<T>& proxy, const wl_interface& known, std::uint32_t name, const char* interface) {
        if (proxy || std::strcmp(interface, known.name) != 0) {
            return false;
        }
        proxy.reset(static_cast<T*>(wl_registry_bind(registry_.get(), name, &known, 1)));
        return true;
    }

    void flush() { wl_display_flush(display_); }
    /// Handles what has come, without waiting.
    void process();

private:
    struct Events;

    bool dispatch();

    const Listener listener_;
    wl_display* display_ = nullptr;
    std::unique_ptr<QSocketNotifier> notifier_;
    Proxy<wl_registry> registry_;
    Proxy<wl_callback> globalsDone_;
};

} // namespace Linux
