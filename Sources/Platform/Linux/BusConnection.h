#pragma once

#include <QSocketNotifier>
#include <chrono>
#include <functional>
#include <memory>
#include <poll.h>
#include <systemd/sd-bus.h>

namespace Linux {

enum class BusKind { Session, System };

/// A connection to a bus for one purpose, by sd-bus: unlike Qt's, it connects without waiting, so that a bus daemon
/// that hangs costs nothing. Main thread only.
/// https://www.freedesktop.org/software/systemd/man/latest/sd-bus.html
class BusConnection {
public:
    BusConnection(BusKind kind, const char* purpose) : kind_(kind), purpose_(purpose) {}
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// Begins to connect. False where there is no such bus. What is sent meanwhile is queued.
    bool open();
    bool isOpen() const { return bus_ != nullptr; }
    /// Null while it is not open.
    sd_bus* get() const { return bus_.get(); }

    /// What the next message comes by. Only while it is open.
    pollfd readiness() const;
    /// Writes what is queued and handles all that has come; to be called after anything was sent.
    void process();

    /// Called when the connection is gone, with all that was asked through it. `hasHung`: the bus answered nothing for
    /// so long that sd-bus gave up, which shows when it comes to; it may be opened again at once.
    std::function<void(bool hasHung)> lost;

private:
    struct Close {
        void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    };

    std::unique_ptr<QSocketNotifier> notifier(QSocketNotifier::Type type);
    void close(int error);

    const BusKind kind_;
    const char* const purpose_;
    bool isProcessing_ = false;
    bool wasReady_ = false;
    std::chrono::steady_clock::time_point opened_;
    std::unique_ptr<sd_bus, Close> bus_;
    std::unique_ptr<QSocketNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_;
};

} // namespace Linux
