#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Linux/Native.h"

#include <QTransform>

namespace Linux {

struct AffineTransformNative : Native {
    QTransform transform;
};

template <>
struct NativeOf<AffineTransform> : std::type_identity<AffineTransformNative> {};

} // namespace Linux
