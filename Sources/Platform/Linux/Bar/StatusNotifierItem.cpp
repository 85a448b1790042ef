#include "Platform/Linux/Bar/StatusNotifierItem.h"

#include "Platform/Linux/Bar/Click.h"
#include "Platform/Linux/Bar/PanelIcon.h"
#include "Platform/Linux/CurrentDesktop.h"
#include "Platform/Linux/DBus.h"
#include "Platform/Linux/Logging.h"

#include <QCoreApplication>
#include <QCursor>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <QtEndian>

namespace Linux {

QDBusArgument& operator<<(QDBusArgument& out, const IconPixmap& pixmap) {
    return writeStruct(out, pixmap.width, pixmap.height, pixmap.bytes);
}

const QDBusArgument& operator>>(const QDBusArgument& in, IconPixmap& pixmap) {
    return readStruct(in, pixmap.width, pixmap.height, pixmap.bytes);
}

QDBusArgument& operator<<(QDBusArgument& out, const ItemToolTip& toolTip) {
    return writeStruct(out, toolTip.iconName, toolTip.icon, toolTip.title, toolTip.text);
}

const QDBusArgument& operator>>(const QDBusArgument& in, ItemToolTip& toolTip) {
    return readStruct(in, toolTip.iconName, toolTip.icon, toolTip.title, toolTip.text);
}

namespace {

// Those that panels ask for, so that none has to scale.
constexpr int sides[] = {16, 18, 22, 24, 32, 36, 44, 48, 64};

const QString itemPath = QStringLiteral("/StatusNotifierItem");

// A name of its own rather than the connection's: to give it back is the only way to leave the panel at once.
QString itemName() {
    return QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
}

QDBusMessage callBus(const QString& method) {
    const auto bus = QStringLiteral("org.freedesktop.DBus");
    return QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, method);
}

void registerItemTypes() {
    qDBusRegisterMetaType<IconPixmap>();
    qDBusRegisterMetaType<IconPixmaps>();
    qDBusRegisterMetaType<ItemToolTip>();
}

IconPixmap pixmap(const QImage& icon) {
    const QImage argb = icon.convertToFormat(QImage::Format_ARGB32);
    QByteArray bytes(argb.sizeInBytes(), Qt::Uninitialized);
    qToBigEndian<quint32>(argb.constBits(), qsizetype{argb.width()} * argb.height(), bytes.data());
    return {argb.width(), argb.height(), bytes};
}

// Hosts disagree about the unit of x and y, so it is the pointer that says where the click was, where it can be asked:
// Xwayland knows it only while it is over an X window.
QPoint clickPosition(int x, int y) {
    const bool isPointerKnown =
        QGuiApplication::platformName() == u"xcb" && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    return isPointerKnown ? QCursor::pos() : QPoint(x, y);
}

} // namespace

StatusNotifierItem::StatusNotifierItem(StatusItemNative& item, const QString& title, const QDBusConnection& bus,
                                       const SystemTray* tray)
    : item_(item), title_(title), bus_(bus), appearance_(tray), menu_(item, bus) {
    registerItemTypes();
    connect(&appearance_, &PanelAppearance::changed, this, &StatusNotifierItem::NewIcon);
    bus_.registerObject(itemPath, this,
                        QDBusConnection::ExportAllProperties | QDBusConnection::ExportScriptableSlots |
                            QDBusConnection::ExportScriptableSignals);
    if (isCurrentDesktop("GNOME")) {
        // Its AppIndicator extension (46) watches another name than the connection's, and loses the item when that
        // watch is faster than the item's properties: seen when both start together.
        registerAs(bus_.baseService());
    } else {
        requestName();
    }
}

StatusNotifierItem::~StatusNotifierItem() {
    bus_.unregisterObject(itemPath);
    if (bus_.isConnected()) { // not when the process ends: the bus knows, and what is sent then is leaked
        bus_.send(callBus(QStringLiteral("ReleaseName")) << itemName());
    }
}

void StatusNotifierItem::requestName() {
    constexpr uint doNotQueue = 4;
    constexpr uint primaryOwner = 1;
    callLater(bus_, callBus(QStringLiteral("RequestName")) << itemName() << doNotQueue, this,
              [this](const QDBusMessage& answer) {
                  const bool owned = answer.arguments().value(0) == primaryOwner;
                  registerAs(owned ? itemName() : bus_.baseService()); // a sandbox may own no names
              });
}

void StatusNotifierItem::registerAs(const QString& name) {
    const auto watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
    auto call = QDBusMessage::createMethodCall(watcher, QStringLiteral("/StatusNotifierWatcher"), watcher,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    call.setAutoStartService(false);
    callLater(bus_, call << name, this, [this](const QDBusMessage& answer) {
        const bool isRefused = answer.type() == QDBusMessage::ErrorMessage;
        qCDebug(barLog) << "the watcher" << (isRefused ? "refused the item:" : "took the item")
                        << answer.errorMessage();
        if (isRefused) {
            Q_EMIT refused();
        }
    });
}

void StatusNotifierItem::imageChanged() {
    menu_.refreshLater(); // with the picture, what the menu says may change
    Q_EMIT NewIcon();
}

IconPixmaps StatusNotifierItem::iconPixmaps() const {
    IconPixmaps pixmaps;
    if (item_.image) {
        for (const int side : sides) {
            pixmaps.append(pixmap(squareIcon(*item_.image, side, appearance_.foreground(), appearance_.rim())));
        }
    }
    return pixmaps;
}

ItemToolTip StatusNotifierItem::toolTip() const {
    return {{}, {}, item_.toolTip, {}};
}

void StatusNotifierItem::Activate(int x, int y) {
    mouseUp(EventType::LeftMouseUp, x, y);
}

void StatusNotifierItem::ContextMenu(int x, int y) {
    mouseUp(EventType::RightMouseUp, x, y);
}

// A middle click toggles too: GNOME's AppIndicator extension gives the left one to the menu.
void StatusNotifierItem::SecondaryActivate(int x, int y) {
    qCDebug(barLog) << "secondary activation";
    deliverLater({EventType::LeftMouseUp, false, clickPosition(x, y)}, item_, this);
}

void StatusNotifierItem::Scroll(int, const QString&) {}

void StatusNotifierItem::mouseUp(EventType type, int x, int y) {
    qCDebug(barLog) << (type == EventType::LeftMouseUp ? "activation" : "context menu") << "at" << x << y;
    const bool control = QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ControlModifier);
    deliverLater({type, control, clickPosition(x, y)}, item_, this);
}

} // namespace Linux
