#include "Platform/Linux/Bar/PanelIcon.h"

#include <QPainter>
#include <algorithm>

namespace Linux {

QColor glyphColor(bool onDark) {
    return onDark ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x24, 0x24, 0x24);
}

QImage squareIcon(const ImageNative& image, int side, const QColor& tint) {
    QImage square(side, side, QImage::Format_ARGB32_Premultiplied);
    square.fill(Qt::transparent);
    const double points = std::max(image.size.width, image.size.height);
    if (points <= 0) {
        return square;
    }
    QImage picture = image.render(side / points, tint);
    picture.setDevicePixelRatio(1); // placed by its pixels here
    QPainter(&square).drawImage((side - picture.width()) / 2, (side - picture.height()) / 2, picture);
    return square;
}

} // namespace Linux
