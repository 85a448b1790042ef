#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Object.h"

namespace NS {

enum class LineCapStyle : unsigned long { Butt = 0, Round = 1, Square = 2 };

/// Lines and curves to fill or stroke (NSBezierPath), with y growing upwards. Any thread, one at a time;
/// `stroke` and `fill` need a current drawing (the handler of an image).
class BezierPath : public Object {
public:
    static BezierPath bezierPath();
    static BezierPath bezierPathWithRoundedRect(const Rect& rect, double xRadius, double yRadius);

    void moveToPoint(const Point& point);
    void curveToPoint(const Point& end, const Point& controlPoint1, const Point& controlPoint2);
    /// Angles in degrees, counted anticlockwise from the x axis; starts a line to the arc when the path has a current
    /// point.
    void appendBezierPathWithArcWithCenter(const Point& center, double radius, double startAngle, double endAngle,
                                           bool clockwise);

    /// Moves every point; the line width stays.
    void transformUsingAffineTransform(const AffineTransform& transform);

    void setLineWidth(double width);
    void setLineCapStyle(LineCapStyle style);

    void stroke() const;
    void fill() const;

    using Object::Object;
};

} // namespace NS
