#include "Platform/Linux/Bar/DBusMenu.h"

#include "Platform/Linux/CurrentDesktop.h"
#include "Platform/Linux/DBus.h"
#include "Platform/Linux/Foundation/UserDefaultsNative.h"
#include "Platform/Linux/Logging.h"

#include <QDBusError>
#include <QDBusMetaType>

namespace Linux {

QDBusArgument& operator<<(QDBusArgument& out, const MenuLine& line) {
    return writeStruct(out, line.id, line.properties);
}

const QDBusArgument& operator>>(const QDBusArgument& in, MenuLine& line) {
    return readStruct(in, line.id, line.properties);
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuLayout& layout) {
    return writeStruct(out, layout.id, layout.properties, layout.lines);
}

const QDBusArgument& operator>>(const QDBusArgument& in, MenuLayout& layout) {
    return readStruct(in, layout.id, layout.properties, layout.lines);
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuRemoval& removal) {
    return writeStruct(out, removal.id, removal.properties);
}

const QDBusArgument& operator>>(const QDBusArgument& in, MenuRemoval& removal) {
    return readStruct(in, removal.id, removal.properties);
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuEvent& event) {
    return writeStruct(out, event.id, event.type, event.data, event.time);
}

const QDBusArgument& operator>>(const QDBusArgument& in, MenuEvent& event) {
    return readStruct(in, event.id, event.type, event.data, event.time);
}

namespace {

using Shortcuts = QList<QStringList>;

void registerMenuTypes() {
    qDBusRegisterMetaType<MenuLine>();
    qDBusRegisterMetaType<QList<MenuLine>>();
    qDBusRegisterMetaType<MenuLayout>();
    qDBusRegisterMetaType<MenuRemoval>();
    qDBusRegisterMetaType<QList<MenuRemoval>>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
    qDBusRegisterMetaType<Shortcuts>();
}

// GTK's panels know keys by the names of their keysyms; Plasma's and LXQt's know the comma only as itself.
QString keyName(const QString& key) {
    const bool isQt = isCurrentDesktop("KDE") || isCurrentDesktop("LXQt");
    return key == u"," && !isQt ? QStringLiteral("comma") : key;
}

/// Nothing where lines came or went.
QList<MenuLine> changedLines(const QList<QVariantMap>& before, const QList<QVariantMap>& now) {
    QList<MenuLine> changed;
    for (int id = 0; before.size() == now.size() && id < now.size(); ++id) {
        if (before[id] != now[id]) {
            changed.append({id, now[id]});
        }
    }
    return changed;
}

QVariantMap propertiesOf(const MenuItem& item) {
    if (item.isSeparatorItem()) {
        return {{QStringLiteral("type"), QStringLiteral("separator")}, {QStringLiteral("visible"), true}};
    }
    auto label = QString::fromStdString(item.title());
    label.replace(u'_', QStringLiteral("__")); // a single one marks the letter that chooses the line
    QVariantMap properties{{QStringLiteral("label"), label},
                           {QStringLiteral("enabled"), item.isEnabled()},
                           {QStringLiteral("visible"), true}};
    if (const auto key = QString::fromStdString(item.keyEquivalent()); !key.isEmpty()) {
        const Shortcuts shortcuts{{QStringLiteral("Control"), keyName(key)}}; // Command is this desktop's Control
        properties.insert(QStringLiteral("shortcut"), QVariant::fromValue(shortcuts));
    }
    return properties;
}

QList<QVariantMap> propertiesOf(const Menu& menu) {
    QList<QVariantMap> all{{{QStringLiteral("children-display"), QStringLiteral("submenu")}}};
    const long count = menu ? menu.numberOfItems() : 0;
    for (long index = 0; index < count; ++index) {
        all.append(propertiesOf(menu.itemAtIndex(index)));
    }
    return all;
}

} // namespace

DBusMenu::DBusMenu(StatusItemNative& item, const QDBusConnection& bus) : item_(item), bus_(bus) {
    registerMenuTypes();
    bus_.registerObject(path().path(), this,
                        QDBusConnection::ExportAllProperties | QDBusConnection::ExportScriptableSlots |
                            QDBusConnection::ExportScriptableSignals);
    preferences_ = NotificationCenter::defaultCenter().addObserverForName(userDefaultsDidChange,
                                                                          [this](const auto&) { refreshLater(); });
}

DBusMenu::~DBusMenu() {
    NotificationCenter::defaultCenter().removeObserver(preferences_);
    bus_.unregisterObject(path().path());
}

QDBusObjectPath DBusMenu::path() {
    return QDBusObjectPath(QStringLiteral("/MenuBar"));
}

void DBusMenu::refreshLater() {
    const auto refreshAsked = [this] {
        if (menu_) {
            refresh();
        }
    };
    QMetaObject::invokeMethod(this, refreshAsked, Qt::QueuedConnection);
}

bool DBusMenu::refresh() {
    menu_ = item_.menuOfRightClick();
    auto properties = propertiesOf(menu_);
    if (properties == properties_) {
        return false;
    }
    const auto changed = changedLines(properties_, properties);
    properties_ = std::move(properties);
    if (!changed.isEmpty()) {
        Q_EMIT ItemsPropertiesUpdated(changed, {});
    }
    Q_EMIT LayoutUpdated(++revision_, 0);
    qCDebug(barLog) << "menu revision" << revision_ << "with" << changed.size() << "lines changed";
    return true;
}

QVariantMap DBusMenu::properties(int id, const QStringList& names) const {
    QVariantMap all = properties_.value(id);
    if (names.isEmpty()) {
        return all;
    }
    QVariantMap wanted;
    for (const QString& name : names) {
        if (const auto property = all.constFind(name); property != all.constEnd()) {
            wanted.insert(name, *property);
        }
    }
    return wanted;
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, MenuLayout& layout) {
    if (!menu_ || parentId == 0) { // not all panels ask for a new one by AboutToShow
        refresh();
    }
    layout = {parentId, properties(parentId, propertyNames), {}};
    if (parentId == 0 && recursionDepth != 0) { // the lines have none under them
        for (int id = 1; contains(id); ++id) {
            layout.lines.append(QVariant::fromValue(MenuLayout{id, properties(id, propertyNames), {}}));
        }
    }
    return revision_;
}

QList<MenuLine> DBusMenu::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames) {
    QList<MenuLine> lines;
    for (int id = 0; contains(id); ++id) {
        if (ids.isEmpty() || ids.contains(id)) { // to name none means all
            lines.append({id, properties(id, propertyNames)});
        }
    }
    return lines;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& name) {
    const QVariant property = properties_.value(id).value(name);
    if (!property.isValid()) {
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("no such property"));
    }
    return QDBusVariant(property);
}

// Queued, so that the panel has its answer though the action may take its time, or end the program.
void DBusMenu::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
    if (eventId == u"opened" && id == 0) {
        refreshLater();
    }
    if (eventId != u"clicked") {
        return;
    }
    const auto choose = [this, menu = menu_, index = long{id} - 1]() mutable {
        const auto alive = item_.shared_from_this(); // the action may let go of the item
        if (menu) {
            menu.performActionForItemAtIndex(index);
        }
    };
    QMetaObject::invokeMethod(this, choose, Qt::QueuedConnection);
}

QList<int> DBusMenu::EventGroup(const QList<MenuEvent>& events) {
    QList<int> unknown;
    for (const auto& event : events) {
        if (contains(event.id)) {
            Event(event.id, event.type, event.data, event.time);
        } else {
            unknown.append(event.id);
        }
    }
    return unknown;
}

bool DBusMenu::AboutToShow(int id) {
    return id == 0 && refresh();
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    QList<int> changed;
    for (const int id : ids) {
        if (AboutToShow(id)) {
            changed.append(id);
        } else if (!contains(id)) {
            idErrors.append(id);
        }
    }
    return changed;
}

} // namespace Linux
