#pragma once

#include "SystemTray.h"

#include <QColor>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace NS {

/// The colour of symbols on the desktop's panel, as far as a program that does not see the panel can tell: what it says
/// as an X11 tray, which most are too; else by the colour scheme of the settings portal; else by the palette.
class PanelAppearance final : public QObject {
    Q_OBJECT

public:
    /// `tray` may be null.
    PanelAppearance(const QDBusConnection& bus, const SystemTray* tray);

    const QColor& foreground() const { return foreground_; }

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void follow(const QDBusConnection& bus);
    QColor currentForeground() const;
    void update();

    const SystemTray* tray_;
    uint scheme_ = 0;
    QColor foreground_;
};

} // namespace NS
