#pragma once

#include <QColor>

namespace Linux {

/// Light or dark, as far as the user has said.
enum class ColorScheme { NoPreference, Dark, Light };

/// Colors everything the application shows: as the desktop would, or the other way round where that is not what the
/// user prefers.
void applyColorScheme(ColorScheme scheme);

/// What the application's colors are like now.
bool isDark();

/// Opaque, for styles set opacities of their own.
QColor mixed(const QColor& a, const QColor& b, double shareOfB);

} // namespace Linux
