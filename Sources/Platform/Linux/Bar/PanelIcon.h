#pragma once

#include "Platform/Linux/AppKit/ImageNative.h"

#include <QColor>
#include <QImage>

namespace Linux {

/// What a template's colour is on a dark or a light panel.
QColor glyphColor(bool onDark);

/// The picture in a square of `side` pixels, as large as it fits and in the middle. A template has the color `tint`,
/// and around it `rim`, if that is one.
QImage squareIcon(const ImageNative& image, int side, const QColor& tint, const QColor& rim = {});

} // namespace Linux
