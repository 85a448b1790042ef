// Draws the application's icon: the program's own filled cup on a plate. Writes Vantorel.icns for the bundle, and a PNG
// of each size for Linux. usage: IconMaker FOLDER

#include "Platform/Linux/AppKit/ImageNative.h"
#include "StatusIcons.h"

#include <QBuffer>
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QtEndian>
#include <cstdio>
#include <utility>

namespace {

/// How one size is laid out. Small ones have less air, and nothing that would blur.
struct Layout {
    double plate; // its side, as a part of the icon's
    double cup;   // its height, likewise
    bool isLarge;
};

Layout layoutOf(int side) {
    return side <= 32 ? Layout{14.0 / 16, 0.62, false} : Layout{824.0 / 1024, 0.49, true};
}

constexpr double cupGrid = 18;

/// What the cup covers of its grid, from the top left.
QRectF cupBounds(bool hasOutline) {
    const double line = hasOutline ? 0.7 : 0;
    return {QPointF(2.6 - line, 1.8), QPointF(14.8, 15.0 + line)};
}

QPainterPath platePath(int side, double length) {
    const double margin = (side - length) / 2;
    QPainterPath path;
    path.addRoundedRect(QRectF(margin, margin, length, length), length * 0.225, length * 0.225);
    return path;
}

/// Soft, and a little below: many faint plates, one larger than the other.
void drawShadow(QPainter& painter, int side, double length) {
    constexpr int layers = 16;
    const double reach = side * 0.05;
    painter.save();
    painter.translate(0, side * 0.012);
    for (int layer = layers; layer > 0; --layer) {
        painter.fillPath(platePath(side, length + reach * layer / layers), QColor(0, 0, 0, 7));
    }
    painter.restore();
}

void drawPlate(QPainter& painter, int side, double length) {
    const auto plate = platePath(side, length);
    QLinearGradient wood(plate.boundingRect().topLeft(), plate.boundingRect().bottomLeft());
    wood.setColorAt(0, QColor(0x5b, 0x3a, 0x29));
    wood.setColorAt(1, QColor(0x2b, 0x18, 0x10));
    painter.fillPath(plate, wood);
}

/// The cup of the bar, in a large size with its outline over it: that closes the gap to the handle.
void drawCup(QPainter& painter, int side, const Layout& layout) {
    const auto bounds = cupBounds(layout.isLarge);
    const double unit = side * layout.cup / bounds.height();
    const auto image = NS::Image::imageWithSize(
        {cupGrid * unit, cupGrid * unit}, /*flipped=*/false, [hasOutline = layout.isLarge](const NS::Rect& rect) {
            StatusIcons::drawCup(rect, /*filled=*/true, StatusIcons::coffee());
            if (hasOutline) {
                StatusIcons::drawCup(rect, /*filled=*/false, StatusIcons::coffee());
            }
            return true;
        });
    const QPointF center(side / 2.0, side / 2.0);
    painter.drawImage(center - bounds.center() * unit, Linux::object<Linux::ImageNative>(image).render(1, {}));
}

QImage icon(int side) {
    const auto layout = layoutOf(side);
    const double length = side * layout.plate;
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    if (layout.isLarge) {
        drawShadow(painter, side, length);
    }
    drawPlate(painter, side, length);
    drawCup(painter, side, layout);
    return image;
}

QByteArray png(const QImage& image) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG", /*quality: the smallest file*/ 0);
    return buffer.data();
}

/// What Finder reads below 128 points: the four channels one after the other, in runs, here of copied bytes only.
QByteArray argb(const QImage& image) {
    const auto straight = image.convertToFormat(QImage::Format_ARGB32);
    QByteArray data("ARGB");
    for (const int shift : {24, 16, 8, 0}) { // alpha, red, green, blue
        for (int y = 0; y < straight.height(); ++y) {
            data += char(straight.width() - 1); // at most 128 in a run
            for (int x = 0; x < straight.width(); ++x) {
                data += char(straight.pixel(x, y) >> shift);
            }
        }
    }
    return data;
}

QByteArray bigEndian(qsizetype number) {
    QByteArray bytes(4, 0);
    qToBigEndian(quint32(number), bytes.data());
    return bytes;
}

QByteArray chunk(const char* type, const QByteArray& content) {
    return type + bigEndian(8 + content.size()) + content;
}

QByteArray icns() {
    QByteArray content = chunk("ic04", argb(icon(16))) + chunk("ic05", argb(icon(32)));
    // 128, 256 and 512 points; then 16, 32, 128, 256 and 512 at two pixels a point.
    const std::pair<const char*, int> pictures[] = {{"ic07", 128}, {"ic08", 256}, {"ic09", 512}, {"ic11", 32},
                                                    {"ic12", 64},  {"ic13", 256}, {"ic14", 512}, {"ic10", 1024}};
    for (const auto& [type, side] : pictures) {
        content += chunk(type, png(icon(side)));
    }
    return chunk("icns", content);
}

bool write(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: IconMaker FOLDER\n", stderr);
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    bool isWritten = write(folder.filePath("Vantorel.icns"), icns());
    for (const int side : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        isWritten = write(folder.filePath(QString::number(side) + ".png"), png(icon(side))) && isWritten;
    }
    if (!isWritten) {
        std::fprintf(stderr, "IconMaker: %s cannot be written\n", argv[1]);
    }
    return isWritten ? 0 : 1;
}
