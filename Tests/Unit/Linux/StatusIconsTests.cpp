#include "StatusIcons.h"

#include "Platform/AppKit/BezierPath.h"
#include "Platform/Linux/AppKit/ImageNative.h"

#include <QImage>
#include <cairo.h>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace {

struct Cup {
    NS::Rect rect;
    bool filled;
};

const NS::Size one{18, 18};

QImage drawn(const Cup& cup) {
    const auto image = NS::Image::imageWithSize(cup.rect.size, false, [cup](const NS::Rect& rect) {
        StatusIcons::drawCup(rect, cup.filled, NS::Color::blackColor());
        return true;
    });
    return Linux::object<Linux::ImageNative>(image).render(1, {});
}

/// The same cup by another hand and another library: outlines built in output units.
QImage reference(const Cup& cup) {
    const int width = static_cast<int>(cup.rect.size.width);
    const int height = static_cast<int>(cup.rect.size.height);
    const double s = std::min(width, height) / 18.0;
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    auto* surface = cairo_image_surface_create_for_data(image.bits(), CAIRO_FORMAT_ARGB32, width, height,
                                                        static_cast<int>(image.bytesPerLine()));
    auto* cr = cairo_create(surface);
    cairo_set_tolerance(cr, 0.01);
    const auto y = [&](double up) { return height - up * s; };
    const double left = 2.6 * s, right = 11.8 * s, top = y(10.2), bottom = y(3.0), r = 1.8 * s;
    constexpr double quarter = std::numbers::pi / 2;
    cairo_new_sub_path(cr);
    cairo_arc(cr, right - r, top + r, r, -quarter, 0);
    cairo_arc(cr, right - r, bottom - r, r, 0, quarter);
    cairo_arc(cr, left + r, bottom - r, r, quarter, 2 * quarter);
    cairo_arc(cr, left + r, top + r, r, 2 * quarter, 3 * quarter);
    cairo_close_path(cr);
    cairo_set_line_width(cr, 1.4 * s);
    cup.filled ? cairo_fill(cr) : cairo_stroke(cr);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    constexpr double seventy = 70 * std::numbers::pi / 180;
    cairo_arc(cr, 11.8 * s, y(6.6), 2.3 * s, -seventy, seventy);
    cairo_stroke(cr);
    cairo_set_line_width(cr, 1.2 * s);
    for (const double x : {5.7, 8.7}) {
        cairo_move_to(cr, x * s, y(12.1));
        cairo_curve_to(cr, (x - 1.3) * s, y(13.2), (x + 1.3) * s, y(14.5), x * s, y(15.6));
        cairo_stroke(cr);
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return image;
}

void expectSame(const QImage& picture, const QImage& expected) {
    ASSERT_EQ(picture.size(), expected.size());
    int total = 0;
    for (int row = 0; row < picture.height(); ++row) {
        for (int column = 0; column < picture.width(); ++column) {
            const int difference = std::abs(qAlpha(picture.pixel(column, row)) - qAlpha(expected.pixel(column, row)));
            EXPECT_LE(difference, 13) << "at " << column << ", " << row; // a twentieth: two ways of anti-aliasing
            total += difference;
        }
    }
    EXPECT_LE(total, picture.width() * picture.height() * 2);
}

class CupDrawing : public testing::TestWithParam<Cup> {};

TEST_P(CupDrawing, MatchesAnIndependentRendering) {
    expectSame(drawn(GetParam()), reference(GetParam()));
}

std::string cupName(const testing::TestParamInfo<Cup>& info) {
    const auto& [rect, filled] = info.param;
    return std::to_string(static_cast<int>(rect.size.width)) + "x" +
           std::to_string(static_cast<int>(rect.size.height)) + (filled ? "Filled" : "Outline");
}

INSTANTIATE_TEST_SUITE_P(Sizes, CupDrawing,
                         testing::Values(Cup{{{0, 0}, {18, 18}}, false}, Cup{{{0, 0}, {18, 18}}, true},
                                         Cup{{{0, 0}, {36, 36}}, false}, Cup{{{0, 0}, {36, 36}}, true},
                                         Cup{{{0, 0}, {36, 18}}, false}, Cup{{{0, 0}, {36, 18}}, true},
                                         Cup{{{0, 0}, {18, 36}}, true}, Cup{{{0, 0}, {72, 72}}, true}),
                         cupName);

TEST(StatusIcons, AWideRectangleHasTheCupAtItsLeft) {
    const QImage wide = drawn({{{0, 0}, {36, 18}}, true});
    EXPECT_EQ(wide.copy(0, 0, 18, 18), drawn({{{0, 0}, one}, true}));
    for (int row = 0; row < 18; ++row) {
        for (int column = 18; column < 36; ++column) {
            EXPECT_EQ(qAlpha(wide.pixel(column, row)), 0);
        }
    }
}

TEST(StatusIcons, ATallRectangleHasTheCupAtItsBottom) {
    const QImage tall = drawn({{{0, 0}, {18, 36}}, true});
    EXPECT_EQ(tall.copy(0, 18, 18, 18), drawn({{{0, 0}, one}, true}));
    EXPECT_EQ(qAlpha(tall.pixel(7, 5)), 0);
}

TEST(StatusIcons, ARectangleElsewhereMovesTheCup) {
    const auto image = NS::Image::imageWithSize({36, 36}, false, [](const NS::Rect&) {
        StatusIcons::drawCup({{18, 18}, one}, true, NS::Color::blackColor());
        return true;
    });
    const QImage picture = Linux::object<Linux::ImageNative>(image).render(1, {});
    EXPECT_EQ(picture.copy(18, 0, 18, 18), drawn({{{0, 0}, one}, true}));
}

TEST(StatusIcons, ALargerRectangleElsewhereMovesTheCupByItsOriginAlone) {
    const auto image = NS::Image::imageWithSize({54, 54}, false, [](const NS::Rect&) {
        StatusIcons::drawCup({{18, 9}, {36, 36}}, true, NS::Color::blackColor());
        return true;
    });
    const QImage picture = Linux::object<Linux::ImageNative>(image).render(1, {});
    EXPECT_EQ(picture.copy(18, 9, 36, 36), drawn({{{0, 0}, {36, 36}}, true}));
}

TEST(StatusIcons, EveryPartOfTheCupHasTheGivenColor) {
    for (const bool filled : {false, true}) {
        const auto image = NS::Image::imageWithSize({72, 72}, false, [filled](const NS::Rect& rect) {
            StatusIcons::drawCup(rect, filled, StatusIcons::coffee());
            return true;
        });
        const QImage picture = Linux::object<Linux::ImageNative>(image).render(1, {});
        for (int row = 0; row < picture.height(); ++row) {
            for (int column = 0; column < picture.width(); ++column) {
                if (const QRgb pixel = picture.pixel(column, row); qAlpha(pixel) == 255) {
                    ASSERT_EQ(pixel, qRgb(237, 158, 56)) << column << ", " << row;
                }
            }
        }
    }
}

TEST(StatusIcons, TheCupIsDrawnOverWhatIsThere) {
    const auto image = NS::Image::imageWithSize(one, false, [](const NS::Rect& rect) {
        auto everywhere = NS::BezierPath::bezierPathWithRoundedRect(rect, 0, 0);
        StatusIcons::coffee().setFill();
        everywhere.fill();
        StatusIcons::drawCup(rect, false, NS::Color::blackColor());
        return true;
    });
    const QImage picture = Linux::object<Linux::ImageNative>(image).render(2, {});
    EXPECT_EQ(picture.pixel(1, 1), qRgb(237, 158, 56));
    EXPECT_EQ(picture.pixel(14, 36 - 13), qRgb(237, 158, 56)); // amid the outlined body
    EXPECT_NE(picture.pixel(14, 36 - 20), qRgb(237, 158, 56)); // on its rim
}

TEST(StatusIcons, TheOutlineIsATemplateAndTheFilledCupIsNot) {
    EXPECT_TRUE(StatusIcons::outline().isTemplate());
    EXPECT_FALSE(StatusIcons::filled().isTemplate());
    EXPECT_EQ(StatusIcons::outline().size(), one);
    EXPECT_EQ(StatusIcons::filled().size(), one);
}

TEST(StatusIcons, TheImagesDrawTheTwoStates) {
    const auto render = [](const NS::Image& image) {
        return Linux::object<Linux::ImageNative>(image).render(2, Qt::white);
    };
    const QImage outline = render(StatusIcons::outline());
    const QImage filled = render(StatusIcons::filled());
    const QPoint inside(14, 36 - 13); // the middle of the body
    EXPECT_EQ(qAlpha(outline.pixel(inside)), 0);
    EXPECT_EQ(filled.pixel(inside), qRgb(237, 158, 56));
    const QPoint rim(14, 36 - 20);
    EXPECT_EQ(outline.pixelColor(rim).rgb(), QColor(Qt::white).rgb()); // a template takes the bar's tint
}

TEST(StatusIcons, EachImageIsMadeOnce) {
    EXPECT_EQ(StatusIcons::outline(), StatusIcons::outline());
    EXPECT_EQ(StatusIcons::filled(), StatusIcons::filled());
    EXPECT_FALSE(StatusIcons::outline() == StatusIcons::filled());
    EXPECT_EQ(StatusIcons::coffee(), StatusIcons::coffee());
}

TEST(StatusIcons, CoffeeIsItsColour) {
    EXPECT_NEAR(StatusIcons::coffee().redComponent(), 0.93, 1e-4);
    EXPECT_NEAR(StatusIcons::coffee().greenComponent(), 0.62, 1e-4);
    EXPECT_NEAR(StatusIcons::coffee().blueComponent(), 0.22, 1e-4);
    EXPECT_EQ(StatusIcons::coffee().alphaComponent(), 1);
}

} // namespace
