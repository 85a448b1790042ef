#include "Platform/AppKit/Color.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

Color Color::colorWithCalibratedRed(double red, double green, double blue, double alpha) {
    return handle<Color>([NSColor colorWithCalibratedRed:red green:green blue:blue alpha:alpha]);
}

Color Color::blackColor() {
    return handle<Color>([NSColor blackColor]);
}

Color Color::labelColor() {
    return handle<Color>([NSColor labelColor]);
}

Color Color::secondaryLabelColor() {
    return handle<Color>([NSColor secondaryLabelColor]);
}

Color Color::tertiaryLabelColor() {
    return handle<Color>([NSColor tertiaryLabelColor]);
}

void Color::setFill() const {
    [object<NSColor>(*this) setFill];
}

void Color::setStroke() const {
    [object<NSColor>(*this) setStroke];
}

double Color::redComponent() const {
    return [object<NSColor>(*this) redComponent];
}

double Color::greenComponent() const {
    return [object<NSColor>(*this) greenComponent];
}

double Color::blueComponent() const {
    return [object<NSColor>(*this) blueComponent];
}

double Color::alphaComponent() const {
    return [object<NSColor>(*this) alphaComponent];
}

} // namespace NS
