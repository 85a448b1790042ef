#pragma once

#include <QColor>

class QPainter;

namespace Linux {

/// The current drawing of this thread, into which paths and colors draw.
class Drawing {
public:
    /// Makes `painter` the current drawing for the life of this object. A valid `tint` replaces every color.
    Drawing(QPainter& painter, const QColor& tint);
    ~Drawing();
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    static Drawing* current();

    void setFillColor(const QColor& color);
    void setStrokeColor(const QColor& color);

    QPainter& painter() const { return painter_; }
    const QColor& fillColor() const { return fillColor_; }
    const QColor& strokeColor() const { return strokeColor_; }

private:
    QColor tinted(const QColor& color) const;

    QPainter& painter_;
    QColor tint_;
    QColor fillColor_;
    QColor strokeColor_;
    Drawing* outer_;
};

} // namespace Linux
