#include "Platform/AppKit/Image.h"

#include "Platform/Linux/AppKit/Drawing.h"
#include "Platform/Linux/AppKit/ImageNative.h"

#include <QPainter>
#include <cmath>

namespace Linux {

QImage ImageNative::render(double scale, const QColor& tint) const {
    const QSize pixels(static_cast<int>(std::lround(size.width * scale)),
                       static_cast<int>(std::lround(size.height * scale)));
    QImage result(pixels, QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(0, pixels.height()); // y grows upwards
    painter.scale(scale, -scale);
    const Drawing drawing(painter, isTemplate ? tint : QColor());
    if (!handler({{0, 0}, size})) {
        result.fill(Qt::transparent);
    }
    return result;
}

} // namespace Linux

namespace NS {

using namespace Linux;

Image Image::imageWithSize(const Size& size, bool flipped, std::function<bool(const Rect&)> handler) {
    Q_ASSERT_X(!flipped, "Image::imageWithSize", "only images with y growing upwards are drawn here");
    auto native = std::make_shared<ImageNative>();
    native->size = size;
    native->handler = std::move(handler);
    return handle<Image>(std::move(native));
}

Size Image::size() const {
    return native(*this).size;
}

void Image::setTemplate(bool isTemplate) {
    native(*this).isTemplate = isTemplate;
}

bool Image::isTemplate() const {
    return native(*this).isTemplate;
}

} // namespace NS
