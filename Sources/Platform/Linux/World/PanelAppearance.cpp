#include "PanelAppearance.h"

#include "DBusCall.h"
#include "PanelIcon.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace NS {

namespace {

constexpr uint preferDark = 1;
constexpr uint preferLight = 2;

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");

// GNOME's own bar is black under either scheme; that of its classic session follows.
bool barIsAlwaysDark() {
    const auto desktops = qgetenv("XDG_CURRENT_DESKTOP").split(':');
    return desktops.contains("GNOME") && !desktops.contains("GNOME-Classic");
}

bool paletteIsDark() {
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

bool isDarkUnder(uint scheme) {
    if (barIsAlwaysDark() || scheme == preferDark) {
        return true;
    }
    return scheme != preferLight && paletteIsDark();
}

// Portals answer `Read` with a variant within the variant.
uint number(QVariant value) {
    while (value.canConvert<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value.toUInt();
}

} // namespace

PanelAppearance::PanelAppearance(const QDBusConnection& bus, const SystemTray* tray)
    : tray_(tray), foreground_(currentForeground()) {
    if (tray_) {
        connect(tray_, &SystemTray::came, this, &PanelAppearance::update);
        connect(tray_, &SystemTray::went, this, &PanelAppearance::update);
        connect(tray_, &SystemTray::recoloured, this, &PanelAppearance::update);
    }
    QCoreApplication::instance()->installEventFilter(this);
    follow(bus);
}

void PanelAppearance::follow(const QDBusConnection& bus) {
    // From any sender: to name one makes Qt ask for its owner and wait.
    QDBusConnection(bus).connect(QString(), path, interface, QStringLiteral("SettingChanged"), {group, key},
                                 QStringLiteral("ssv"), this, SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto read = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    read << group << key;
    callLater(bus, read, this, [this](const QDBusMessage& answer) {
        if (answer.type() == QDBusMessage::ReplyMessage) {
            scheme_ = number(answer.arguments().value(0));
            update();
        }
    });
}

void PanelAppearance::settingChanged(const QString&, const QString&, const QDBusVariant& value) {
    scheme_ = number(value.variant());
    update();
}

bool PanelAppearance::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange) {
        update();
    }
    return QObject::eventFilter(watched, event);
}

QColor PanelAppearance::currentForeground() const {
    if (const auto said = tray_ ? tray_->foreground() : std::nullopt) {
        return *said;
    }
    return glyphColor(isDarkUnder(scheme_));
}

void PanelAppearance::update() {
    if (const QColor now = currentForeground(); now != foreground_) {
        foreground_ = now;
        Q_EMIT changed();
    }
}

} // namespace NS
