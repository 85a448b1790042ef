#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace NS {

/// The session's settings, as desktops of every kind tell them on the session bus: here whether the user prefers dark.
class SettingsPortal final : public QObject {
    Q_OBJECT

public:
    explicit SettingsPortal(const QDBusConnection& bus);

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void read(const QDBusConnection& bus);
};

} // namespace NS
