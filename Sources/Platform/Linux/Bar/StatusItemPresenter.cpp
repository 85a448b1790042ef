#include "Platform/Linux/AppKit/StatusItemNative.h"
#include "Platform/Linux/Bar/StatusNotifierItem.h"
#include "Platform/Linux/Bar/StatusNotifierWatch.h"
#include "Platform/Linux/Bar/SystemTrayIcon.h"
#include "Platform/Linux/BusProbe.h"
#include "Platform/Linux/Logging.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QTimer>
#include <X11/Xlib.h>
#include <chrono>
#include <cstdio>
#include <optional>

namespace Linux {

namespace {

using namespace std::chrono_literals;

std::unique_ptr<SystemTray> systemTray() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection()) { // the off-screen platform has the one without the other
        return nullptr;
    }
    return std::make_unique<SystemTray>(x11->connection(), XDefaultScreen(x11->display()));
}

/// One presenter at a time: the session's own bar where it has one, else the X11 tray.
class SessionPresenter final : public StatusItemPresenter {
public:
    explicit SessionPresenter(StatusItemNative& item);

    void imageChanged() override;
    void toolTipChanged() override;

private:
    void busAnswered();
    void complain() const;
    void changeOver();
    std::unique_ptr<StatusItemPresenter> notifierItem();

    StatusItemNative& item_;
    const QString name_ = QCoreApplication::applicationName();
    const std::unique_ptr<SystemTray> tray_ = systemTray();               // absent without X11
    std::optional<StatusNotifierWatch> watch_;                            // absent without a session bus that answers
    StatusNotifierWatch::Host host_ = StatusNotifierWatch::Host::Unknown; // as when the cup was last placed
    std::unique_ptr<StatusItemPresenter> shown_;
    QTimer patience_; // for a bus that hangs
};

SessionPresenter::SessionPresenter(StatusItemNative& item) : item_(item) {
    patience_.setSingleShot(true);
    QObject::connect(&patience_, &QTimer::timeout, &patience_, [this] { changeOver(); });
    if (whenSessionBusAnswers(&patience_, [this] { busAnswered(); })) {
        patience_.start(500ms);
    }
    QTimer::singleShot(10s, &patience_, [this] { complain(); }); // a session may start its panel after us
    changeOver();
}

void SessionPresenter::busAnswered() {
    patience_.stop();
    const auto bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        watch_.emplace(bus);
        QObject::connect(&*watch_, &StatusNotifierWatch::hostChanged, &*watch_, [this] { changeOver(); });
    }
    changeOver();
}

// On standard error alone: the system's log has no use for what a desktop lacks.
void SessionPresenter::complain() const {
    const bool isSeen = (watch_ && watch_->host() == StatusNotifierWatch::Host::Present) || (tray_ && *tray_);
    if (!isSeen) {
        std::fputs("nothing here shows the cup: there is neither a StatusNotifier host (on GNOME, the AppIndicator "
                   "extension) nor an X11 tray; a second start shows Settings\n",
                   stderr);
    }
}

void SessionPresenter::changeOver() {
    using Host = StatusNotifierWatch::Host;
    const Host host = watch_ ? watch_->host() : patience_.isActive() ? Host::Unknown : Host::Absent;
    // What shows stays until the answer. A host may be another one than before, and wants its own item.
    if (host == Host::Unknown || (host == Host::Absent && host_ == Host::Absent)) {
        return;
    }
    host_ = host;
    shown_.reset(); // first, so that the cup never shows twice
    qCDebug(barLog) << "the cup is"
                    << (host == Host::Present ? "a StatusNotifierItem"
                        : tray_               ? "an icon of the X11 tray"
                                              : "not shown");
    if (host == Host::Present) {
        shown_ = notifierItem();
    } else if (tray_) {
        shown_ = std::make_unique<SystemTrayIcon>(item_, name_, *tray_);
    }
}

std::unique_ptr<StatusItemPresenter> SessionPresenter::notifierItem() {
    auto item = std::make_unique<StatusNotifierItem>(item_, name_, QDBusConnection::sessionBus(), tray_.get());
    // Queued: it ends the item that says so.
    QObject::connect(item.get(), &StatusNotifierItem::refused, &*watch_, &StatusNotifierWatch::hostRefused,
                     Qt::QueuedConnection);
    return item;
}

void SessionPresenter::imageChanged() {
    if (shown_) {
        shown_->imageChanged();
    }
}

void SessionPresenter::toolTipChanged() {
    if (shown_) {
        shown_->toolTipChanged();
    }
}

} // namespace

std::unique_ptr<StatusItemPresenter> makeStatusItemPresenter(StatusItemNative& item) {
    return std::make_unique<SessionPresenter>(item);
}

} // namespace Linux
