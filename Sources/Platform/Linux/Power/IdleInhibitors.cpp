#include "Platform/Linux/Power/IdleInhibitors.h"

#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QGuiApplication>
#include <QObject>

// Last, for its macros.
#include <X11/extensions/scrnsaver.h>

namespace Linux {

namespace {

constexpr int longestWait = 1000; // milliseconds

const QString& screenSaver() {
    static const auto name = QStringLiteral("org.freedesktop.ScreenSaver");
    return name;
}

QDBusMessage screenSaverCall(const QString& method) {
    return QDBusMessage::createMethodCall(screenSaver(), QStringLiteral("/org/freedesktop/ScreenSaver"), screenSaver(),
                                          method);
}

QDBusMessage loginCall(const QString& method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.login1"),
                                          QStringLiteral("/org/freedesktop/login1"),
                                          QStringLiteral("org.freedesktop.login1.Manager"), method);
}

QString unusedConnectionName() {
    static int count = 0;
    return QStringLiteral("inhibitor-%1").arg(++count);
}

/// Null when the session is not on X11.
Display* display() {
    const auto* x11 = qApp ? qApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->display() : nullptr;
}

bool canSuspend(Display* server) {
    int event = 0;
    int error = 0;
    int major = 0;
    int minor = 0;
    return XScreenSaverQueryExtension(server, &event, &error) && XScreenSaverQueryVersion(server, &major, &minor) &&
           (major > 1 || (major == 1 && minor >= 1));
}

/// The server counts, for each client, how often it was asked.
bool suspend(bool isSuspended) {
    auto* server = display();
    if (!server || !canSuspend(server)) {
        return false;
    }
    XScreenSaverSuspend(server, isSuspended);
    XSync(server, False);
    return true;
}

} // namespace

PrivateBus::PrivateBus(QDBusConnection::BusType type)
    : connection_(QDBusConnection::connectToBus(type, unusedConnectionName())) {}

PrivateBus::~PrivateBus() {
    QDBusConnection::disconnectFromBus(connection_.name());
}

QDBusPendingCall PrivateBus::call(const QDBusMessage& message) const {
    return connection_.asyncCall(message, longestWait);
}

ScreenSaverInhibitor::ScreenSaverInhibitor(const QString& application, const QString& reason)
    : application_(application), reason_(reason), bus_(QDBusConnection::SessionBus), answer_(inhibit()) {}

ScreenSaverInhibitor::~ScreenSaverInhibitor() {
    if (const QDBusPendingReply<uint> cookie = answer_; cookie.isValid()) {
        bus_.connection().send(screenSaverCall(QStringLiteral("UnInhibit")) << cookie.value());
    }
}

QDBusPendingCall ScreenSaverInhibitor::inhibit() const {
    return bus_.call(screenSaverCall(QStringLiteral("Inhibit")) << application_ << reason_);
}

bool ScreenSaverInhibitor::isGranted() {
    answer_.waitForFinished();
    // Watched only from here on: the service may have been started by this very call.
    watcher_ = std::make_unique<QDBusServiceWatcher>(screenSaver(), bus_.connection(),
                                                     QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(watcher_.get(), &QDBusServiceWatcher::serviceRegistered, [this] { answer_ = inhibit(); });
    return QDBusPendingReply<uint>(answer_).isValid();
}

LoginInhibitor::LoginInhibitor(const QString& application, const QString& reason)
    : bus_(QDBusConnection::SystemBus),
      answer_(bus_.call(loginCall(QStringLiteral("Inhibit"))
                        << QStringLiteral("idle") << application << reason << QStringLiteral("block"))) {}

bool LoginInhibitor::isGranted() {
    answer_.waitForFinished();
    return QDBusPendingReply<QDBusUnixFileDescriptor>(answer_).isValid();
}

XInhibitor::XInhibitor() : isGranted_(suspend(true)) {}

XInhibitor::~XInhibitor() {
    if (isGranted_) {
        suspend(false);
    }
}

} // namespace Linux
