#pragma once

#include <QColor>
#include <QObject>
#include <memory>

namespace NS {

/// Light or dark, as far as the user has said.
enum class ColorScheme { NoPreference, Dark, Light };

/// Colours everything the application shows: as the desktop would, or the other way round where that is not what the
/// user prefers.
void applyColorScheme(ColorScheme scheme);

/// Applies what the session says the user prefers, now and at each change, as long as the result lives. Null where no
/// session says anything.
std::unique_ptr<QObject> followColorScheme();

/// What the application's colours are like now.
bool isDark();

/// Opaque, for styles set opacities of their own.
QColor mixed(const QColor& a, const QColor& b, double shareOfB);

} // namespace NS
