#include "Platform/Linux/Bar/StatusNotifierWatch.h"

#include "Platform/Linux/DBus.h"
#include "Platform/Linux/Logging.h"

#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <chrono>

namespace Linux {

namespace {

using namespace std::chrono_literals;

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

QDBusMessage isHostRegistered() {
    auto get = QDBusMessage::createMethodCall(watcherName, watcherPath,
                                              QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << watcherName << QStringLiteral("IsStatusNotifierHostRegistered");
    get.setAutoStartService(false); // it is the desktop's business whether there is a watcher
    return get;
}

StatusNotifierWatch::Host hostIn(const QDBusMessage& answer) {
    const bool registered = answer.type() == QDBusMessage::ReplyMessage &&
                            answer.arguments().value(0).value<QDBusVariant>().variant().toBool();
    return registered ? StatusNotifierWatch::Host::Present : StatusNotifierWatch::Host::Absent;
}

} // namespace

StatusNotifierWatch::StatusNotifierWatch(const QDBusConnection& bus) : bus_(bus) {
    // Long enough for any watcher that works: without it the cup would show in the X11 tray for a moment first.
    patience_.setInterval(500ms);
    patience_.setSingleShot(true);
    connect(&patience_, &QTimer::timeout, this, [this] { setHost(Host::Absent); });
    followHosts();
    ask();
    patience_.start();
}

void StatusNotifierWatch::followHosts() {
    auto* watcher = new QDBusServiceWatcher(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &StatusNotifierWatch::watcherChanged);
    for (const auto* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        // From any sender: to name one makes Qt ask for its owner and wait.
        bus_.connect(QString(), watcherPath, watcherName, QString::fromLatin1(signal), this, SLOT(ask()));
    }
}

void StatusNotifierWatch::ask() {
    const int question = ++question_;
    callLater(bus_, isHostRegistered(), this, [this, question](const QDBusMessage& answer) {
        if (question == question_) {
            settle(hostIn(answer));
        }
    });
}

void StatusNotifierWatch::watcherChanged(const QString&, const QString&, const QString& newOwner) {
    if (newOwner.isEmpty()) {
        ++question_; // what the watcher that went may still have answered counts no more
        settle(Host::Absent);
        return;
    }
    setHost(Host::Unknown); // also when one watcher follows another at once: the item must be registered again
    ask();
    patience_.start();
}

void StatusNotifierWatch::hostRefused() {
    settle(Host::Absent);
}

void StatusNotifierWatch::settle(Host host) {
    patience_.stop();
    setHost(host);
}

void StatusNotifierWatch::setHost(Host host) {
    if (host != host_) {
        host_ = host;
        constexpr const char* names[] = {"unknown", "absent", "present"};
        qCDebug(barLog) << "StatusNotifier host" << names[static_cast<int>(host)];
        Q_EMIT hostChanged();
    }
}

} // namespace Linux
