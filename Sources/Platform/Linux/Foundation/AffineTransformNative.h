#pragma once

#include "Platform/Linux/Native.h"

#include <QTransform>

namespace NS {

struct AffineTransformNative : Native {
    QTransform transform;
};

} // namespace NS
