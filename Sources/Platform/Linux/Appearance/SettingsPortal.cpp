#include "Platform/Linux/AppKit/Palette.h"
#include "Platform/Linux/BusProbe.h"
#include "Platform/Linux/DBus.h"
#include "Platform/Linux/Seam.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>

namespace Linux {

namespace {

constexpr uint preferDark = 1;
constexpr uint preferLight = 2;

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString schemeGroup = QStringLiteral("org.freedesktop.appearance");
const QString schemeKey = QStringLiteral("color-scheme");

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

/// The session's settings, as desktops of every kind tell them on the session bus: here whether the user prefers dark.
/// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html
class SettingsPortal final : public QObject {
    Q_OBJECT

public:
    void follow(const QDBusConnection& bus);

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void read(const QDBusConnection& bus);
};

void SettingsPortal::follow(const QDBusConnection& bus) {
    qRegisterMetaType<QDBusVariant>(); // Qt takes no slot with one before something else has made it known
    // From any sender: to name one makes Qt ask for its owner and wait.
    QDBusConnection(bus).connect(QString(), portalPath, settingsInterface, QStringLiteral("SettingChanged"),
                                 {schemeGroup, schemeKey}, QStringLiteral("ssv"), this,
                                 SLOT(settingChanged(QString, QString, QDBusVariant)));
    read(bus);
}

void SettingsPortal::read(const QDBusConnection& bus) {
    auto call = QDBusMessage::createMethodCall(portalName, portalPath, settingsInterface, QStringLiteral("Read"));
    call << schemeGroup << schemeKey;
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
    auto portal = std::make_unique<SettingsPortal>();
    const auto follow = [&portal = *portal] { portal.follow(QDBusConnection::sessionBus()); };
    return whenSessionBusAnswers(portal.get(), follow) ? std::move(portal) : nullptr;
}

} // namespace Linux

#include "SettingsPortal.moc"
