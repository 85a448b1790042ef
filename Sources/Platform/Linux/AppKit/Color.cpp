#include "Platform/AppKit/Color.h"

#include "Platform/Linux/AppKit/ColorNative.h"
#include "Platform/Linux/AppKit/Drawing.h"

#include <QGuiApplication>
#include <QPalette>

namespace Linux {

namespace {

// How strongly the fainter labels stand out: readable (secondary), and visibly out of use (tertiary).
constexpr float secondaryOpacity = 0.64F;
constexpr float tertiaryOpacity = 0.34F;

Color color(ColorNative::Kind kind, const QColor& fixed = {}) {
    auto native = std::make_shared<ColorNative>();
    native->kind = kind;
    native->fixed = fixed;
    return handle<Color>(std::move(native));
}

QColor resolved(const Color& color) {
    return native(color).resolved(QGuiApplication::palette());
}

} // namespace

QColor ColorNative::resolved(const QPalette& palette) const {
    if (kind == Kind::Fixed) {
        return fixed;
    }
    QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    if (kind == Kind::SecondaryLabel) {
        text.setAlphaF(secondaryOpacity);
    } else if (kind == Kind::TertiaryLabel) {
        text.setAlphaF(tertiaryOpacity);
    }
    return text;
}

} // namespace Linux

namespace NS {

using namespace Linux;

Color Color::colorWithCalibratedRed(double red, double green, double blue, double alpha) {
    return color(ColorNative::Kind::Fixed, QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green),
                                                            static_cast<float>(blue), static_cast<float>(alpha)));
}

Color Color::blackColor() {
    return color(ColorNative::Kind::Fixed, Qt::black);
}

Color Color::labelColor() {
    return color(ColorNative::Kind::Label);
}

Color Color::secondaryLabelColor() {
    return color(ColorNative::Kind::SecondaryLabel);
}

Color Color::tertiaryLabelColor() {
    return color(ColorNative::Kind::TertiaryLabel);
}

void Color::setFill() const {
    if (auto* drawing = Drawing::current()) {
        drawing->setFillColor(resolved(*this));
    }
}

void Color::setStroke() const {
    if (auto* drawing = Drawing::current()) {
        drawing->setStrokeColor(resolved(*this));
    }
}

double Color::redComponent() const {
    return native(*this).fixed.redF();
}

double Color::greenComponent() const {
    return native(*this).fixed.greenF();
}

double Color::blueComponent() const {
    return native(*this).fixed.blueF();
}

double Color::alphaComponent() const {
    return native(*this).fixed.alphaF();
}

} // namespace NS
