#include "Platform/AppKit/Switch.h"

#include "Platform/Linux/AppKit/Palette.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QApplication>
#include <QCheckBox>
#include <QImage>
#include <QMouseEvent>
#include <QPalette>
#include <gtest/gtest.h>

namespace {

using NS::ControlStateValue;

struct SwitchTest : testing::Test {
    SwitchTest() {
        control.setAction([this] { ++actions; });
        widget->resize(widget->sizeHint());
        widget->show();
    }

    void mouse(QEvent::Type type, const QPoint& at) const {
        const auto button = Qt::LeftButton;
        QMouseEvent event(type, at, widget->mapToGlobal(at), button,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : button, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }
    void click(const QPoint& at) const {
        mouse(QEvent::MouseButtonPress, at);
        mouse(QEvent::MouseButtonRelease, at);
    }
    void press(Qt::Key key) const {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, Qt::NoModifier);
            QApplication::sendEvent(widget, &event);
        }
    }
    QImage picture() const { return widget->grab().toImage(); }
    QColor at(const QPoint& point) const { return picture().pixelColor(point); }
    QPoint left() const { return {14, 14}; }
    QPoint right() const { return {30, 14}; }

    int actions = 0;
    NS::Switch control = NS::Switch::initWithFrame({});
    QCheckBox* widget = dynamic_cast<QCheckBox*>(Linux::object<Linux::ViewNative>(control).widget.data());
};

TEST_F(SwitchTest, IsOffAndEnabledAtFirst) {
    EXPECT_EQ(control.state(), ControlStateValue::Off);
    EXPECT_TRUE(control.isEnabled());
}

TEST_F(SwitchTest, AClickAnywhereOnItSwitchesAndActs) {
    click({4, 14});
    EXPECT_EQ(control.state(), ControlStateValue::On);
    click({widget->width() - 5, 14});
    EXPECT_EQ(control.state(), ControlStateValue::Off);
    EXPECT_EQ(actions, 2);
}

TEST_F(SwitchTest, AClickThatEndsElsewhereDoesNothing) {
    mouse(QEvent::MouseButtonPress, left());
    mouse(QEvent::MouseButtonRelease, {200, 200});
    EXPECT_EQ(control.state(), ControlStateValue::Off);
    EXPECT_EQ(actions, 0);
}

TEST_F(SwitchTest, TheSpaceBarSwitchesAndActs) {
    press(Qt::Key_Space);
    EXPECT_EQ(control.state(), ControlStateValue::On);
    EXPECT_EQ(actions, 1);
}

TEST_F(SwitchTest, SettingItsStateDoesNotAct) {
    control.setState(ControlStateValue::On);
    control.setState(ControlStateValue::Off);
    EXPECT_EQ(actions, 0);
}

TEST_F(SwitchTest, ADisabledOneTakesNeitherMouseNorKeyboard) {
    control.setEnabled(false);
    click(left());
    press(Qt::Key_Space);
    EXPECT_EQ(control.state(), ControlStateValue::Off);
    EXPECT_EQ(actions, 0);
}

TEST_F(SwitchTest, TheKnobIsAtTheSideOfTheState) {
    EXPECT_EQ(at(left()), QColor(Qt::white));
    EXPECT_NE(at(right()), QColor(Qt::white));
    control.setState(ControlStateValue::On);
    EXPECT_EQ(at(right()), QColor(Qt::white));
    EXPECT_EQ(at(left()), widget->palette().color(QPalette::Highlight));
}

TEST_F(SwitchTest, ItShowsThatItIsDisabled) {
    control.setState(ControlStateValue::On);
    const QImage enabled = picture();
    control.setEnabled(false);
    EXPECT_NE(picture(), enabled);
    EXPECT_GT(at(left()).lightness(), enabled.pixelColor(left()).lightness());
}

TEST_F(SwitchTest, ItShowsAFocusRingToThoseWhoWorkByKeyboardOnly) {
    widget->activateWindow();
    widget->clearFocus();
    QApplication::processEvents();
    const QImage without = picture();
    widget->setFocus(Qt::MouseFocusReason);
    ASSERT_TRUE(widget->hasFocus());
    EXPECT_EQ(picture(), without);
    widget->clearFocus();
    widget->window()->setAttribute(Qt::WA_KeyboardFocusChange);
    widget->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(at({widget->width() / 2, 1}), widget->palette().color(QPalette::Highlight));
    EXPECT_EQ(without.pixelColor(widget->width() / 2, 1), widget->palette().color(QPalette::Window));
}

TEST_F(SwitchTest, ItFollowsTheAppearance) {
    const QColor light = at(right());
    Linux::applyColorScheme(Linux::ColorScheme::Dark);
    QCoreApplication::processEvents();
    EXPECT_EQ(at(left()), QColor(Qt::white));
    EXPECT_LT(at(right()).lightness(), light.lightness());
}

TEST_F(SwitchTest, ItIsSharpAtAScaleFactorOfTwo) {
    control.setState(ControlStateValue::On);
    QImage twice(widget->size() * 2, QImage::Format_ARGB32_Premultiplied);
    twice.setDevicePixelRatio(2);
    twice.fill(Qt::transparent);
    widget->render(&twice);
    // Half a point above the track there is nothing of it, half a point below its edge all of it.
    EXPECT_NE(twice.pixelColor(44, 5), twice.pixelColor(44, 6));
    EXPECT_EQ(twice.pixelColor(44, 6), widget->palette().color(QPalette::Highlight));
}

} // namespace
