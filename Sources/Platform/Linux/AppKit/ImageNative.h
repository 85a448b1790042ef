#pragma once

#include "Platform/AppKit/Image.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Linux/Native.h"

#include <QColor>
#include <QImage>
#include <functional>

namespace Linux {

struct ImageNative : Native {
    Size size;
    bool isTemplate = false;
    std::function<bool(const Rect&)> handler;

    /// The picture at `scale` pixels a point, transparent where nothing is drawn. A template takes the color `tint`.
    QImage render(double scale, const QColor& tint) const;
};

template <>
struct NativeOf<Image> : std::type_identity<ImageNative> {};

} // namespace Linux
