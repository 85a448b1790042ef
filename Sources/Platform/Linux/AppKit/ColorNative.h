#pragma once

#include "Platform/AppKit/Color.h"
#include "Platform/Linux/Native.h"

#include <QColor>

class QPalette;

namespace Linux {

struct ColorNative : Native {
    enum class Kind { Fixed, Label, SecondaryLabel, TertiaryLabel };

    Kind kind = Kind::Fixed;
    QColor fixed;

    /// The color as it is under `palette`: the system's colors follow it.
    QColor resolved(const QPalette& palette) const;
};

template <>
struct NativeOf<Color> : std::type_identity<ColorNative> {};

} // namespace Linux
