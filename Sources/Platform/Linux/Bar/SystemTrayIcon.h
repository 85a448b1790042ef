#pragma once

#include "Platform/Linux/AppKit/StatusItemNative.h"
#include "Platform/Linux/Bar/SystemTray.h"
#include "Platform/Linux/Bar/TrayWindow.h"

#include <QAbstractNativeEventFilter>
#include <QColor>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QTimer>
#include <optional>

namespace Linux {

/// A status item as an icon in the X11 system tray, whenever there is one.
class SystemTrayIcon final : public QObject, public QAbstractNativeEventFilter, public StatusItemPresenter {
    Q_OBJECT

public:
    SystemTrayIcon(StatusItemNative& item, const QString& title, const SystemTray& tray);

    void imageChanged() override { draw(); }
    void toolTipChanged() override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    void dock();
    void undock();
    void draw();
    QColor tint() const;

    void handle(int type, const xcb_generic_event_t& event);
    void exposed(const xcb_expose_event_t& event);
    void configured(const xcb_configure_notify_event_t& event);
    void pressed(const xcb_button_press_event_t& event);
    void released(const xcb_button_release_event_t& event);
    void hovered(const xcb_motion_notify_event_t& event);
    void left();
    void showToolTip();

    StatusItemNative& item_;
    QString title_;
    const SystemTray& tray_;
    std::optional<TrayWindow> window_;
    xcb_button_t pressedButton_ = 0;
    std::optional<QPoint> pointer_; // while it is over the icon
    QTimer toolTipDelay_;
    QTimer settling_;
};

} // namespace Linux
