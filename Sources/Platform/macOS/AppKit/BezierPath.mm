#include "Platform/AppKit/BezierPath.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<NSUInteger>(LineCapStyle::Butt) == NSLineCapStyleButt);
static_assert(static_cast<NSUInteger>(LineCapStyle::Round) == NSLineCapStyleRound);
static_assert(static_cast<NSUInteger>(LineCapStyle::Square) == NSLineCapStyleSquare);

BezierPath BezierPath::bezierPath() {
    return handle<BezierPath>([NSBezierPath bezierPath]);
}

BezierPath BezierPath::bezierPathWithRoundedRect(const Rect& rect, double xRadius, double yRadius) {
    return handle<BezierPath>([NSBezierPath bezierPathWithRoundedRect:toNSRect(rect) xRadius:xRadius yRadius:yRadius]);
}

void BezierPath::moveToPoint(const Point& point) {
    [object<NSBezierPath>(*this) moveToPoint:toNSPoint(point)];
}

void BezierPath::curveToPoint(const Point& end, const Point& controlPoint1, const Point& controlPoint2) {
    [object<NSBezierPath>(*this) curveToPoint:toNSPoint(end)
                                controlPoint1:toNSPoint(controlPoint1)
                                controlPoint2:toNSPoint(controlPoint2)];
}

void BezierPath::appendBezierPathWithArcWithCenter(const Point& center, double radius, double startAngle,
                                                   double endAngle, bool clockwise) {
    [object<NSBezierPath>(*this) appendBezierPathWithArcWithCenter:toNSPoint(center)
                                                            radius:radius
                                                        startAngle:startAngle
                                                          endAngle:endAngle
                                                         clockwise:clockwise];
}

void BezierPath::transformUsingAffineTransform(const AffineTransform& transform) {
    [object<NSBezierPath>(*this) transformUsingAffineTransform:object<NSAffineTransform>(transform)];
}

void BezierPath::setLineWidth(double width) {
    [object<NSBezierPath>(*this) setLineWidth:width];
}

void BezierPath::setLineCapStyle(LineCapStyle style) {
    [object<NSBezierPath>(*this) setLineCapStyle:static_cast<NSLineCapStyle>(style)];
}

void BezierPath::stroke() const {
    [object<NSBezierPath>(*this) stroke];
}

void BezierPath::fill() const {
    [object<NSBezierPath>(*this) fill];
}

} // namespace NS
