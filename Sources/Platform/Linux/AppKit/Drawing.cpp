#include "Platform/Linux/AppKit/Drawing.h"

namespace Linux {

namespace {

thread_local Drawing* currentDrawing = nullptr;

} // namespace

Drawing::Drawing(QPainter& painter, const QColor& tint)
    : painter_(painter), tint_(tint), fillColor_(tinted(Qt::black)), strokeColor_(fillColor_), outer_(currentDrawing) {
    currentDrawing = this;
}

Drawing::~Drawing() {
    currentDrawing = outer_;
}

Drawing* Drawing::current() {
    return currentDrawing;
}

void Drawing::setFillColor(const QColor& color) {
    fillColor_ = tinted(color);
}

void Drawing::setStrokeColor(const QColor& color) {
    strokeColor_ = tinted(color);
}

QColor Drawing::tinted(const QColor& color) const {
    if (!tint_.isValid()) {
        return color;
    }
    QColor result = tint_;
    result.setAlphaF(tint_.alphaF() * color.alphaF());
    return result;
}

} // namespace Linux
