#include "Platform/AppKit/Font.h"

#include "Platform/Linux/AppKit/FontNative.h"

#include <QApplication>
#include <QFontInfo>
#include <cmath>

namespace Linux {

namespace {

constexpr double usualSize = 13;

} // namespace

QFont FontNative::font() const {
    QFont font = QApplication::font();
    font.setPixelSize(static_cast<int>(std::lround(QFontInfo(font).pixelSize() * pointSize / usualSize)));
    font.setWeight(weight == FontWeight::Semibold ? QFont::DemiBold : QFont::Normal);
    return font;
}

} // namespace Linux

namespace NS {

using namespace Linux;

Font Font::systemFontOfSize(double size) {
    return systemFontOfSize(size, FontWeight::Regular);
}

Font Font::systemFontOfSize(double size, FontWeight weight) {
    auto native = std::make_shared<FontNative>();
    native->pointSize = size;
    native->weight = weight;
    return handle<Font>(std::move(native));
}

double Font::smallSystemFontSize() {
    return 11;
}

double Font::pointSize() const {
    return native(*this).pointSize;
}

} // namespace NS
