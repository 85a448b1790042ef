#include "Platform/Linux/Bar/PanelAppearance.h"

#include "Platform/Linux/AppKit/Palette.h"
#include "Platform/Linux/Bar/PanelIcon.h"
#include "Platform/Linux/CurrentDesktop.h"

#include <QCoreApplication>
#include <QEvent>

namespace Linux {

namespace {

// GNOME's own bar is black under either scheme; that of its classic session follows.
bool barIsAlwaysDark() {
    return isCurrentDesktop("GNOME") && !isCurrentDesktop("GNOME-Classic");
}

} // namespace

PanelAppearance::PanelAppearance(const SystemTray* tray) : tray_(tray) {
    update();
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

std::optional<QColor> PanelAppearance::knownForeground() const {
    if (barIsAlwaysDark()) { // its AppIndicator extension (46) is an X11 tray too, and says black
        return glyphColor(true);
    }
    return tray_ ? tray_->foreground() : std::nullopt;
}

void PanelAppearance::update() {
    const auto known = knownForeground();
    const QColor foreground = known.value_or(glyphColor(isDark()));
    const QColor rim = known ? QColor() : glyphColor(!isDark());
    if (foreground != foreground_ || rim != rim_) {
        foreground_ = foreground;
        rim_ = rim;
        Q_EMIT changed();
    }
}

} // namespace Linux
