#include "Platform/Linux/Bar/PanelAppearance.h"

#include "Platform/Linux/AppKit/Palette.h"
#include "Platform/Linux/Bar/PanelIcon.h"

#include <QCoreApplication>
#include <QEvent>

namespace Linux {

namespace {

// GNOME's own bar is black under either scheme; that of its classic session follows.
bool barIsAlwaysDark() {
    const auto desktops = qgetenv("XDG_CURRENT_DESKTOP").split(':');
    return desktops.contains("GNOME") && !desktops.contains("GNOME-Classic");
}

} // namespace

PanelAppearance::PanelAppearance(const SystemTray* tray) : tray_(tray), foreground_(currentForeground()) {
    if (tray_) {
        connect(tray_, &SystemTray::came, this, &PanelAppearance::update);
        connect(tray_, &SystemTray::went, this, &PanelAppearance::update);
        connect(tray_, &SystemTray::recoloured, this, &PanelAppearance::update);
    }
    QCoreApplication::instance()->installEventFilter(this);
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
    return glyphColor(barIsAlwaysDark() || isDark());
}

void PanelAppearance::update() {
    if (const QColor now = currentForeground(); now != foreground_) {
        foreground_ = now;
        Q_EMIT changed();
    }
}

} // namespace Linux
