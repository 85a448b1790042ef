#include "Platform/Linux/AppKit/StatusItemNative.h"
#include "Platform/Linux/Bar/StatusNotifierItem.h"
#include "Platform/Linux/Bar/StatusNotifierWatch.h"
#include "Platform/Linux/Bar/SystemTrayIcon.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <X11/Xlib.h>
#include <optional>

namespace Linux {

namespace {

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
    void changeOver();
    std::unique_ptr<StatusItemPresenter> notifierItem();

    StatusItemNative& item_;
    const QString name_ = QCoreApplication::applicationName();
    const std::unique_ptr<SystemTray> tray_ = systemTray(); // absent without X11
    std::optional<StatusNotifierWatch> watch_;              // absent without a session bus
    std::unique_ptr<StatusItemPresenter> shown_;
};

SessionPresenter::SessionPresenter(StatusItemNative& item) : item_(item) {
    const auto bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        watch_.emplace(bus);
        QObject::connect(&*watch_, &StatusNotifierWatch::hostChanged, &*watch_, [this] { changeOver(); });
    }
    changeOver();
}

void SessionPresenter::changeOver() {
    using Host = StatusNotifierWatch::Host;
    shown_.reset(); // first, so that the cup never shows twice
    const Host host = watch_ ? watch_->host() : Host::Absent;
    if (host == Host::Present) {
        shown_ = notifierItem();
    } else if (host == Host::Absent && tray_) {
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
