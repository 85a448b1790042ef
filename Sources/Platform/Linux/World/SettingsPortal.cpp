#include "SettingsPortal.h"

#include "DBusCall.h"
#include "Platform/Linux/AppKit/Appearance.h"

#include <QDBusMessage>

namespace NS {

namespace {

constexpr uint preferDark = 1;
constexpr uint preferLight = 2;

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");

// Portals answer `Read` with a variant within the variant.
uint number(QVariant value) {
    while (value.canConvert<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value.toUInt();
}

void apply(const QVariant& value) {
    const uint scheme = number(value);
    applyColorScheme(scheme == preferDark    ? ColorScheme::Dark
                     : scheme == preferLight ? ColorScheme::Light
                                             : ColorScheme::NoPreference);
}

} // namespace

SettingsPortal::SettingsPortal(const QDBusConnection& bus) {
    qRegisterMetaType<QDBusVariant>(); // Qt takes no slot with one before something else has made it known
    // From any sender: to name one makes Qt ask for its owner and wait.
    QDBusConnection(bus).connect(QString(), path, interface, QStringLiteral("SettingChanged"), {group, key},
                                 QStringLiteral("ssv"), this, SLOT(settingChanged(QString, QString, QDBusVariant)));
    read(bus);
}

void SettingsPortal::read(const QDBusConnection& bus) {
    auto call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call << group << key;
    callLater(bus, call, this, [](const QDBusMessage& answer) {
        if (answer.type() == QDBusMessage::ReplyMessage) {
            apply(answer.arguments().value(0));
        }
    });
}

void SettingsPortal::settingChanged(const QString&, const QString&, const QDBusVariant& value) {
    apply(value.variant());
}

std::unique_ptr<QObject> followColorScheme() {
    const auto bus = QDBusConnection::sessionBus();
    return bus.isConnected() ? std::make_unique<SettingsPortal>(bus) : nullptr;
}

} // namespace NS
