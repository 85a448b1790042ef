#pragma once

#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Linux/AppKit/StatusItemNative.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace Linux {

struct MenuLine {
    int id;
    QVariantMap properties;
};

struct MenuLayout {
    int id;
    QVariantMap properties;
    QVariantList lines; // each a layout again
};

/// A line's properties that are no more.
struct MenuRemoval {
    int id;
    QStringList properties;
};

struct MenuEvent {
    int id;
    QString type;
    QDBusVariant data;
    uint time;
};

/// The menu of a status item on the session bus, for panels that show menus themselves (com.canonical.dbusmenu,
/// https://github.com/AyatanaIndicators/libdbusmenu/blob/master/libdbusmenu-glib/dbus-menu.xml). Its lines are numbered
/// from 1, 0 is the menu. What is scriptable here is the interface on the bus.
class DBusMenu final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    DBusMenu(StatusItemNative& item, const QDBusConnection& bus);
    ~DBusMenu() override;

    static QDBusObjectPath path();

    /// The menu may be another now. Not all panels ask before they open it.
    void refreshLater();

    uint version() const { return 3; }
    QString textDirection() const { return QStringLiteral("ltr"); }
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    Q_SCRIPTABLE uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                                Linux::MenuLayout& layout);
    Q_SCRIPTABLE QList<Linux::MenuLine> GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString& name);
    Q_SCRIPTABLE void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    Q_SCRIPTABLE QList<int> EventGroup(const QList<Linux::MenuEvent>& events);
    Q_SCRIPTABLE bool AboutToShow(int id);
    Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);
    /// GNOME's AppIndicator extension (46) reads the properties of lines that it knows from this alone.
    Q_SCRIPTABLE void ItemsPropertiesUpdated(const QList<Linux::MenuLine>& updatedProps,
                                             const QList<Linux::MenuRemoval>& removedProps);

private:
    bool refresh();
    bool contains(int id) const { return id >= 0 && id < properties_.size(); }
    QVariantMap properties(int id, const QStringList& names) const;

    StatusItemNative& item_;
    QDBusConnection bus_;
    Observer preferences_;          // of their changes: the language may be another
    Menu menu_;                     // as it was last built; absent before a panel asks
    QList<QVariantMap> properties_; // by number, as the panels know them
    uint revision_ = 0;
};

} // namespace Linux
