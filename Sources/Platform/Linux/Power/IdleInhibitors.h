#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>
#include <QString>
#include <memory>

namespace Linux {

/// A connection to a bus for one purpose only: whatever is asked for through it, even what is granted when nobody waits
/// any longer, ends with this object.
class PrivateBus {
public:
    explicit PrivateBus(QDBusConnection::BusType type);
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    QDBusConnection connection() const { return connection_; }
    QDBusPendingCall call(const QDBusMessage& message) const; // fails after a second without an answer

private:
    QDBusConnection connection_;
};

// Each inhibitor asks in its constructor and holds what it was granted until its destructor. Main thread only.

/// The session's screen saver service, which most desktops have. Asks again when the service appears or restarts.
class ScreenSaverInhibitor {
public:
    ScreenSaverInhibitor(const QString& application, const QString& reason);
    ~ScreenSaverInhibitor();
    ScreenSaverInhibitor(const ScreenSaverInhibitor&) = delete;
    ScreenSaverInhibitor& operator=(const ScreenSaverInhibitor&) = delete;

    /// Waits for the answer and says whether it grants.
    bool isGranted();

private:
    QDBusPendingCall inhibit() const;

    const QString application_;
    const QString reason_;
    const PrivateBus bus_;
    QDBusPendingCall answer_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
};

/// The login manager, for desktops that watch only that.
class LoginInhibitor {
public:
    LoginInhibitor(const QString& application, const QString& reason);

    /// Waits for the answer and says whether it grants.
    bool isGranted();

private:
    const PrivateBus bus_;
    QDBusPendingCall answer_; // with the descriptor that holds the inhibition until it is closed
};

/// The X server's own screen saver and power saving.
class XInhibitor {
public:
    XInhibitor();
    ~XInhibitor();
    XInhibitor(const XInhibitor&) = delete;
    XInhibitor& operator=(const XInhibitor&) = delete;

    bool isGranted() const { return isGranted_; }

private:
    const bool isGranted_;
};

} // namespace Linux
