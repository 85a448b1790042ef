#pragma once

#include "Platform/AppKit/Font.h"
#include "Platform/Linux/Native.h"

#include <QFont>

namespace Linux {

struct FontNative : Native {
    double pointSize = 0;
    FontWeight weight = FontWeight::Regular;

    /// The desktop's own font, larger or smaller by as much as this one differs from the usual size.
    QFont font() const;
};

template <>
struct NativeOf<Font> : std::type_identity<FontNative> {};

} // namespace Linux
