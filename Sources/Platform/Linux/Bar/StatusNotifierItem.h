#pragma once

#include "Platform/Linux/AppKit/StatusItemNative.h"
#include "Platform/Linux/Bar/DBusMenu.h"
#include "Platform/Linux/Bar/PanelAppearance.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QList>
#include <QObject>
#include <QString>

namespace Linux {

/// ARGB, 32 bits a pixel, in network byte order.
struct IconPixmap {
    int width;
    int height;
    QByteArray bytes;
};
using IconPixmaps = QList<IconPixmap>;

struct ItemToolTip {
    QString iconName;
    IconPixmaps icon;
    QString title;
    QString text;
};

/// A status item as the session bus shows it to the desktop's panels
/// (https://www.freedesktop.org/wiki/Specifications/StatusNotifierItem/). What is scriptable here is the interface on
/// the bus; of its signals those are never sent whose property stays.
class StatusNotifierItem final : public QObject, public StatusItemPresenter {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ title CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconThemePath READ noName CONSTANT)
    Q_PROPERTY(QString IconName READ noName CONSTANT)
    Q_PROPERTY(Linux::IconPixmaps IconPixmap READ iconPixmaps)
    Q_PROPERTY(QString IconAccessibleDesc READ description)
    Q_PROPERTY(QString OverlayIconName READ noName CONSTANT)
    Q_PROPERTY(Linux::IconPixmaps OverlayIconPixmap READ noPixmaps CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ noName CONSTANT)
    Q_PROPERTY(Linux::IconPixmaps AttentionIconPixmap READ noPixmaps CONSTANT)
    Q_PROPERTY(QString AttentionMovieName READ noName CONSTANT)
    Q_PROPERTY(Linux::ItemToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
    /// `tray` tells the panel's colours; it may be null.
    StatusNotifierItem(StatusItemNative& item, const QString& title, const QDBusConnection& bus,
                       const SystemTray* tray);
    ~StatusNotifierItem() override;

    void imageChanged() override;
    void toolTipChanged() override { Q_EMIT NewToolTip(); }

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString title() const { return title_; }
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    QString noName() const { return {}; }
    IconPixmaps noPixmaps() const { return {}; }
    IconPixmaps iconPixmaps() const;
    QString description() const { return item_.toolTip; }
    ItemToolTip toolTip() const;
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const { return DBusMenu::path(); }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(int x, int y);
    Q_SCRIPTABLE void ContextMenu(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    Q_SCRIPTABLE void Scroll(int delta, const QString& orientation);

Q_SIGNALS:
    Q_SCRIPTABLE void NewTitle();
    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewAttentionIcon();
    Q_SCRIPTABLE void NewOverlayIcon();
    Q_SCRIPTABLE void NewToolTip();
    Q_SCRIPTABLE void NewStatus(const QString& status);

    /// The watcher did not take the item.
    void refused();

private:
    void requestName();
    void registerAs(const QString& name);
    void mouseUp(EventType type, int x, int y);

    StatusItemNative& item_;
    QString title_;
    QDBusConnection bus_;
    PanelAppearance appearance_;
    DBusMenu menu_;
};

} // namespace Linux
