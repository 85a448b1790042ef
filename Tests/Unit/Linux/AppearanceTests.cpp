#include "Platform/Linux/AppKit/Palette.h"

#include "Platform/AppKit/TextField.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QApplication>
#include <QPalette>
#include <gtest/gtest.h>

namespace {

using Linux::ColorScheme;

QPalette palette() {
    return QGuiApplication::palette();
}

TEST(AppearanceTest, WithoutAPreferenceTheDesktopsColoursStay) {
    const QPalette before = palette();
    Linux::applyColorScheme(ColorScheme::NoPreference);
    EXPECT_EQ(palette(), before);
    EXPECT_FALSE(Linux::isDark());
}

TEST(AppearanceTest, APreferenceThatTheDesktopsColoursMeetChangesNothing) {
    const QPalette before = palette();
    Linux::applyColorScheme(ColorScheme::Light);
    EXPECT_EQ(palette(), before);
}

TEST(AppearanceTest, DarkIsDarkAndReadableAndGoesAgain) {
    const QPalette before = palette();
    Linux::applyColorScheme(ColorScheme::Dark);
    EXPECT_TRUE(Linux::isDark());
    for (const auto& [text, ground] :
         {std::pair(QPalette::WindowText, QPalette::Window), std::pair(QPalette::Text, QPalette::Base),
          std::pair(QPalette::ButtonText, QPalette::Button), std::pair(QPalette::ToolTipText, QPalette::ToolTipBase)}) {
        EXPECT_GT(palette().color(text).lightness() - palette().color(ground).lightness(), 150) << text;
    }
    Linux::applyColorScheme(ColorScheme::NoPreference);
    EXPECT_EQ(palette(), before);
}

TEST(AppearanceTest, LabelsFollowAtOnce) {
    const auto label = NS::TextField::labelWithString("a");
    auto faint = NS::TextField::labelWithString("b");
    faint.setTextColor(NS::Color::tertiaryLabelColor());
    const auto apply = [](ColorScheme scheme) {
        Linux::applyColorScheme(scheme);
        QCoreApplication::processEvents();
    };
    const auto color = [](const NS::TextField& field) {
        return Linux::object<Linux::ViewNative>(field).widget->palette().color(QPalette::WindowText);
    };
    apply(ColorScheme::Dark);
    EXPECT_GT(color(label).lightness(), 200);
    EXPECT_GT(color(faint).lightness(), 200);
    EXPECT_NEAR(color(faint).alphaF(), 0.34, 0.01);
    apply(ColorScheme::Light);
    EXPECT_LT(color(label).lightness(), 50);
    EXPECT_LT(color(faint).lightness(), 50);
}

} // namespace
