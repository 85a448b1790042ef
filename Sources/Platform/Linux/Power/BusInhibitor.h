#pragma once

#include "Platform/Linux/BusConnection.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Power/IdleInhibitor.h"

#include <QByteArray>
#include <cstdint>

namespace Linux {

/// How a service of a bus is asked to inhibit idleness.
struct InhibitingService {
    BusKind bus;
    const char* name;
    const char* path;
    const char* interface;
    bool autoStart; // whether to ask may start it
    int (*append)(sd_bus_message* call, const char* application, const char* reason);
    const char* release; // the method that takes the cookie back; null for one that grants by a descriptor
};

/// https://specifications.freedesktop.org/idle-inhibit-spec/latest/
extern const InhibitingService screenSaver;
/// https://gitlab.gnome.org/GNOME/gnome-session
extern const InhibitingService sessionManager;
/// https://www.freedesktop.org/wiki/Specifications/power-management-spec/
extern const InhibitingService powerManagement;
/// https://www.freedesktop.org/software/systemd/man/latest/org.freedesktop.login1.html
extern const InhibitingService login;

/// A service that holds an inhibition for as long as a connection lasts, or a descriptor. Asks again when the service
/// restarts.
class BusInhibitor final : public IdleInhibitor {
public:
    explicit BusInhibitor(const InhibitingService& service);

    void prepare() override { connect(); }
    void ask(const QString& application, const QString& reason) override;
    void release() override;
    std::optional<pollfd> awaited() const override;
    void process() override { bus_.process(); }

private:
    bool connect();
    void watchOwner();
    void ask();
    bool send();
    void answered(sd_bus_message* answer);
    bool take(sd_bus_message* answer);
    void giveBack(std::uint32_t cookie);
    void ownerChanged(bool isThere);
    void lost(bool hasHung);

    const InhibitingService& service_;
    BusConnection bus_;
    QByteArray application_;
    QByteArray reason_;
    bool isAnswerDue_ = false;
    std::optional<std::uint32_t> cookie_;
    Descriptor descriptor_;
};

} // namespace Linux
