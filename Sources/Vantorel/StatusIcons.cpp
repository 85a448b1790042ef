#include "StatusIcons.h"

#include "Platform/AppKit/BezierPath.h"
#include "Platform/Foundation/AffineTransform.h"

#include <algorithm>

namespace StatusIcons {

namespace {

constexpr double grid = 18;

NS::Image cupImage(bool filled, const NS::Color& color) {
    auto image = NS::Image::imageWithSize({grid, grid}, /*flipped=*/false, [filled, color](const NS::Rect& rect) {
        drawCup(rect, filled, color);
        return true;
    });
    image.setTemplate(!filled);
    return image;
}

NS::AffineTransform gridToRect(const NS::Rect& rect, double scale) {
    auto transform = NS::AffineTransform::transform();
    transform.translateXBy(rect.origin.x, rect.origin.y);
    transform.scaleBy(scale);
    return transform;
}

NS::BezierPath handlePath() {
    auto path = NS::BezierPath::bezierPath();
    path.appendBezierPathWithArcWithCenter({11.8, 6.6}, 2.3, -70, 70, /*clockwise=*/false);
    return path;
}

NS::BezierPath steamPath(double x) {
    auto path = NS::BezierPath::bezierPath();
    path.moveToPoint({x, 12.1});
    path.curveToPoint({x, 15.6}, {x - 1.3, 13.2}, {x + 1.3, 14.5});
    return path;
}

void strokeRounded(NS::BezierPath path, const NS::AffineTransform& transform, double lineWidth) {
    path.transformUsingAffineTransform(transform);
    path.setLineWidth(lineWidth);
    path.setLineCapStyle(NS::LineCapStyle::Round);
    path.stroke();
}

} // namespace

const NS::Color& coffee() {
    static const NS::Color color = NS::Color::colorWithCalibratedRed(0.93, 0.62, 0.22, 1.0);
    return color;
}

const NS::Image& outline() {
    static const NS::Image image = cupImage(/*filled=*/false, NS::Color::blackColor());
    return image;
}

const NS::Image& filled() {
    static const NS::Image image = cupImage(/*filled=*/true, coffee());
    return image;
}

void drawCup(const NS::Rect& rect, bool filled, const NS::Color& color) {
    const double scale = std::min(rect.size.width, rect.size.height) / grid;
    const auto transform = gridToRect(rect, scale);
    color.setStroke();
    color.setFill();

    auto body = NS::BezierPath::bezierPathWithRoundedRect({{2.6, 3.0}, {9.2, 7.2}}, 1.8, 1.8);
    body.transformUsingAffineTransform(transform);
    if (filled) {
        body.fill();
    } else {
        body.setLineWidth(1.4 * scale);
        body.stroke();
    }
    strokeRounded(handlePath(), transform, 1.4 * scale);
    for (const double x : {5.7, 8.7}) {
        strokeRounded(steamPath(x), transform, 1.2 * scale);
    }
}

} // namespace StatusIcons
