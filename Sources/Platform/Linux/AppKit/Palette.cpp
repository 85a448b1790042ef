#include "Platform/Linux/AppKit/Palette.h"

#include <QApplication>
#include <QPalette>

namespace Linux {

namespace {

QPalette palette(const QColor& button, const QColor& window, const QColor& base, const QColor& text) {
    QPalette palette(button, window); // the shades in between follow from these
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, mixed(text, window, 0.6));
    }
    palette.setColor(QPalette::Highlight, QColor(0x30, 0x8c, 0xc6));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

QPalette darkPalette() {
    return palette(QColor(0x3c, 0x3c, 0x3e), QColor(0x2b, 0x2b, 0x2d), QColor(0x22, 0x22, 0x24),
                   QColor(0xf2, 0xf2, 0xf2));
}

QPalette lightPalette() {
    return palette(QColor(0xef, 0xef, 0xef), QColor(0xef, 0xef, 0xef), Qt::white, QColor(0x14, 0x14, 0x14));
}

} // namespace

QColor mixed(const QColor& a, const QColor& b, double shareOfB) {
    const auto mix = [shareOfB](int x, int y) { return static_cast<int>(x + (y - x) * shareOfB); };
    return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

bool isDark() {
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

void applyColorScheme(ColorScheme scheme) {
    QApplication::setPalette(QPalette()); // the desktop's own
    if (scheme == ColorScheme::Dark && !isDark()) {
        QApplication::setPalette(darkPalette());
    } else if (scheme == ColorScheme::Light && isDark()) {
        QApplication::setPalette(lightPalette());
    }
}

} // namespace Linux
