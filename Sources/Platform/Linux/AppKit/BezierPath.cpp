#include "Platform/AppKit/BezierPath.h"

#include "Platform/Linux/AppKit/Drawing.h"
#include "Platform/Linux/Foundation/AffineTransformNative.h"

#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <cmath>

namespace Linux {

namespace {

struct BezierPathNative : Native {
    QPainterPath path;
    double lineWidth = 1;
    LineCapStyle lineCap = LineCapStyle::Butt;
};

QPointF qt(const Point& point) {
    return {point.x, point.y};
}

Qt::PenCapStyle qt(LineCapStyle style) {
    switch (style) {
    case LineCapStyle::Round:
        return Qt::RoundCap;
    case LineCapStyle::Square:
        return Qt::SquareCap;
    case LineCapStyle::Butt:
        break;
    }
    return Qt::FlatCap;
}

// The painter itself is content with curves that are a quarter of a pixel off, which shows in a small picture.
constexpr double fineness = 64;

/// The path with its curves made of straight lines, as many as it takes.
QPainterPath flattened(const QPainterPath& path) {
    QPainterPath result;
    result.setFillRule(path.fillRule());
    const auto back = QTransform::fromScale(1 / fineness, 1 / fineness);
    for (const QPolygonF& polygon : path.toSubpathPolygons(QTransform::fromScale(fineness, fineness))) {
        result.addPolygon(back.map(polygon));
    }
    return result;
}

// Degrees from the start to the end of an arc in the asked direction.
double sweep(double startAngle, double endAngle, bool clockwise) {
    const double anticlockwise = std::fmod(std::fmod(endAngle - startAngle, 360) + 360, 360);
    return clockwise ? anticlockwise - 360 : anticlockwise;
}

} // namespace

template <>
struct NativeOf<BezierPath> : std::type_identity<BezierPathNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

BezierPath BezierPath::bezierPath() {
    return handle<BezierPath>(std::make_shared<BezierPathNative>());
}

BezierPath BezierPath::bezierPathWithRoundedRect(const Rect& rect, double xRadius, double yRadius) {
    auto result = bezierPath();
    native(result).path.addRoundedRect(QRectF(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height), xRadius,
                                       yRadius);
    return result;
}

void BezierPath::moveToPoint(const Point& point) {
    native(*this).path.moveTo(qt(point));
}

void BezierPath::curveToPoint(const Point& end, const Point& controlPoint1, const Point& controlPoint2) {
    native(*this).path.cubicTo(qt(controlPoint1), qt(controlPoint2), qt(end));
}

void BezierPath::appendBezierPathWithArcWithCenter(const Point& center, double radius, double startAngle,
                                                   double endAngle, bool clockwise) {
    auto& path = native(*this).path;
    const QRectF circle(center.x - radius, center.y - radius, 2 * radius, 2 * radius);
    // Qt counts angles for a y axis that grows downwards.
    if (path.elementCount() == 0) {
        path.arcMoveTo(circle, -startAngle);
    }
    path.arcTo(circle, -startAngle, -sweep(startAngle, endAngle, clockwise));
}

void BezierPath::transformUsingAffineTransform(const AffineTransform& transform) {
    auto& path = native(*this).path;
    path = native(transform).transform.map(path);
}

void BezierPath::setLineWidth(double width) {
    native(*this).lineWidth = width;
}

void BezierPath::setLineCapStyle(LineCapStyle style) {
    native(*this).lineCap = style;
}

void BezierPath::stroke() const {
    if (auto* drawing = Drawing::current()) {
        const auto& self = native(*this);
        QPainterPathStroker stroker;
        stroker.setWidth(self.lineWidth);
        stroker.setCurveThreshold(1 / fineness); // after the width, which sets it too
        stroker.setCapStyle(qt(self.lineCap));
        stroker.setJoinStyle(Qt::MiterJoin);
        drawing->painter().fillPath(flattened(stroker.createStroke(self.path)), drawing->strokeColor());
    }
}

void BezierPath::fill() const {
    if (auto* drawing = Drawing::current()) {
        drawing->painter().fillPath(flattened(native(*this).path), drawing->fillColor());
    }
}

} // namespace NS
