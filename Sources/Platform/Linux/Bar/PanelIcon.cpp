#include "Platform/Linux/Bar/PanelIcon.h"

#include <QPainter>
#include <algorithm>

namespace Linux {

QColor glyphColor(bool onDark) {
    return onDark ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x24, 0x24, 0x24);
}

QImage squareIcon(const ImageNative& image, int side, const QColor& tint, const QColor& rim) {
    QImage square(side, side, QImage::Format_ARGB32_Premultiplied);
    square.fill(Qt::transparent);
    const double points = std::max(image.size.width, image.size.height);
    if (points <= 0) {
        return square;
    }
    QPainter painter(&square);
    const auto draw = [&](const QColor& color, std::initializer_list<QPoint> offsets) {
        QImage picture = image.render(side / points, color);
        picture.setDevicePixelRatio(1); // placed by its pixels here
        const QPoint corner((side - picture.width()) / 2, (side - picture.height()) / 2);
        for (const QPoint offset : offsets) {
            painter.drawImage(corner + offset, picture);
        }
    };
    if (image.isTemplate && rim.isValid()) {
        const int width = std::max(1, side / 32);
        draw(rim, {{-width, 0}, {width, 0}, {0, -width}, {0, width}});
    }
    draw(tint, {{}});
    return square;
}

} // namespace Linux
