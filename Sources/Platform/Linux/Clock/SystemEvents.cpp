#include "Platform/AppKit/Workspace.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Linux/BusConnection.h"
#include "Platform/Linux/Clock/Sleep.h"
#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Seam.h"

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QObject>
#include <QSocketNotifier>
#include <QTimeZone>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <memory>
#include <sys/timerfd.h>
#include <unistd.h>

namespace Linux {

/// Posts that the machine woke (on the workspace's center) and that the clock or the time zone changed (on the default
/// one). Without logind or timedated, their events are not posted; nothing polls.
/// https://www.freedesktop.org/software/systemd/man/org.freedesktop.login1.html (PrepareForSleep), timerfd_create(2)
class SystemEvents : public QObject {
public:
    explicit SystemEvents(NotificationCenter workspaceCenter);

private:
    void prepareForSleep(bool goingToSleep);
    void zoneMayHaveChanged();
    void watchServices();
    void watchClock();
    void armClock();

    NotificationCenter workspaceCenter_;
    BusConnection bus_{BusKind::System, "the system's events"};
    const Descriptor clock_{timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)};
    std::unique_ptr<QSocketNotifier> clockNotifier_;
    QFileSystemWatcher files_;
    QByteArray zone_;
};

std::shared_ptr<void> watchSystem(const NotificationCenter& workspaceCenter) {
    return std::make_shared<SystemEvents>(workspaceCenter);
}

SystemEvents::SystemEvents(NotificationCenter workspaceCenter)
    : workspaceCenter_(std::move(workspaceCenter)), zone_(systemTimeZone().id()) {
    bus_.lost = [this](bool hasHung) {
        if (hasHung) {
            watchServices();
        }
    };
    watchServices();
    // The folder for a link or a file that is replaced, the file for one that is written to.
    files_.addPaths({QStringLiteral("/etc"), QStringLiteral("/etc/localtime")});
    connect(&files_, &QFileSystemWatcher::directoryChanged, this, &SystemEvents::zoneMayHaveChanged);
    connect(&files_, &QFileSystemWatcher::fileChanged, this, &SystemEvents::zoneMayHaveChanged);
    watchClock();
}

void SystemEvents::watchServices() {
    if (!bus_.open()) {
        return;
    }
    const auto sleep = [](sd_bus_message* signal, void* self, sd_bus_error*) {
        int goingToSleep = 0;
        if (sd_bus_message_read(signal, "b", &goingToSleep) > 0) {
            static_cast<SystemEvents*>(self)->prepareForSleep(goingToSleep != 0);
        }
        return 0;
    };
    const auto zone = [](sd_bus_message*, void* self, sd_bus_error*) {
        static_cast<SystemEvents*>(self)->zoneMayHaveChanged();
        return 0;
    };
    sd_bus_match_signal_async(bus_.get(), nullptr, "org.freedesktop.login1", "/org/freedesktop/login1",
                              "org.freedesktop.login1.Manager", "PrepareForSleep", sleep, nullptr, this);
    sd_bus_match_signal_async(bus_.get(), nullptr, "org.freedesktop.timedate1", "/org/freedesktop/timedate1",
                              "org.freedesktop.DBus.Properties", "PropertiesChanged", zone, nullptr, this);
    bus_.process();
}

void SystemEvents::prepareForSleep(bool goingToSleep) {
    if (goingToSleep) {
        Sleep::current().begin();
        return;
    }
    workspaceCenter_.postNotificationName(NotificationName::WorkspaceDidWake());
    Sleep::current().end();
}

void SystemEvents::zoneMayHaveChanged() {
    files_.addPath(QStringLiteral("/etc/localtime")); // the watch goes with the file that was replaced
    const QByteArray zone = systemTimeZone().id();
    if (std::exchange(zone_, zone) != zone) {
        NotificationCenter::defaultCenter().postNotificationName(NotificationName::SystemTimeZoneDidChange());
    }
}

// A timer for a day that never comes is cancelled when the clock is set.
void SystemEvents::watchClock() {
    if (!clock_) {
        return;
    }
    armClock();
    clockNotifier_ = std::make_unique<QSocketNotifier>(clock_.number(), QSocketNotifier::Read);
    connect(clockNotifier_.get(), &QSocketNotifier::activated, this, [this] {
        std::uint64_t expirations = 0;
        const bool wasSet = read(clock_.number(), &expirations, sizeof expirations) < 0 && errno == ECANCELED;
        armClock();
        if (wasSet) {
            NotificationCenter::defaultCenter().postNotificationName(NotificationName::SystemClockDidChange());
        }
    });
}

void SystemEvents::armClock() {
    const timespec farAway = {.tv_sec = std::numeric_limits<std::int32_t>::max() * 4L, .tv_nsec = 0};
    const itimerspec never = {.it_interval = {}, .it_value = farAway};
    timerfd_settime(clock_.number(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr);
}

} // namespace Linux
