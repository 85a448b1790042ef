#include "Platform/AppKit/DatePicker.h"

#include "Platform/Foundation/Calendar.h"
#include "Platform/Linux/AppKit/ViewNative.h"
#include "Seam/Clock.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTimeEdit>
#include <gtest/gtest.h>

namespace {

NS::Date at(double seconds) {
    return NS::Date::dateWithTimeIntervalSince1970(seconds);
}

constexpr double day = 1'714'953'600; // 2024-05-06 in UTC, the zone of the tests

struct DatePickerTest : testing::Test {
    DatePickerTest() { make(); }

    void make() {
        picker = NS::DatePicker::initWithFrame({});
        picker.setAction([this] { ++actions; });
        picker.setDateValue(at(day + 9 * 3600.0));
        edit = dynamic_cast<QTimeEdit*>(Linux::object<Linux::ViewNative>(picker).widget.data());
        edit->show();
        edit->setSelectedSection(QDateTimeEdit::HourSection);
    }

    void makeIn(const char* locale) {
        QLocale::setDefault(QLocale(locale));
        make();
    }

    void press(Qt::Key key, const QString& text = {}) const {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(edit, &event);
    }
    void type(const QString& digits) const {
        for (const QChar digit : digits) {
            press(Qt::Key(digit.unicode()), digit);
        }
    }

    int actions = 0;
    NS::DatePicker picker;
    QTimeEdit* edit = nullptr;
};

TEST_F(DatePickerTest, ShowsTheTimeOfDay) {
    EXPECT_EQ(edit->text(), "09:00");
    picker.setDateValue(at(day));
    EXPECT_EQ(edit->text(), "00:00");
    picker.setDateValue(at(day + 86'399));
    EXPECT_EQ(edit->text(), "23:59");
}

TEST_F(DatePickerTest, ShowsItInTheZoneInForce) {
    Seam::setTimeZone("Asia/Kathmandu");
    picker.setDateValue(at(day));
    EXPECT_EQ(edit->text(), "05:45");
}

TEST_F(DatePickerTest, GivesBackWhatWasSet) {
    picker.setDateValue(at(day + 12.5));
    EXPECT_EQ(picker.dateValue(), at(day + 12.5));
    EXPECT_EQ(actions, 0);
}

TEST_F(DatePickerTest, PickingKeepsTheDay) {
    press(Qt::Key_Up);
    EXPECT_EQ(picker.dateValue(), at(day + 10 * 3600.0));
    EXPECT_EQ(actions, 1);
    edit->setSelectedSection(QDateTimeEdit::MinuteSection);
    press(Qt::Key_Down);
    EXPECT_EQ(picker.dateValue(), at(day + 10 * 3600.0 + 59 * 60.0)); // minutes go round, the hour stays
    EXPECT_EQ(actions, 2);
}

TEST_F(DatePickerTest, GoesRoundMidnight) {
    picker.setDateValue(at(day + 23 * 3600.0));
    press(Qt::Key_Up);
    EXPECT_EQ(picker.dateValue(), at(day));
    press(Qt::Key_Down);
    EXPECT_EQ(picker.dateValue(), at(day + 23 * 3600.0));
}

TEST_F(DatePickerTest, ActsOnceForATypedTime) {
    type("2215");
    EXPECT_EQ(actions, 0);
    press(Qt::Key_Return);
    EXPECT_EQ(picker.dateValue(), at(day + 22 * 3600.0 + 15 * 60.0));
    EXPECT_EQ(actions, 1);
}

TEST_F(DatePickerTest, ATypedTimeCountsWhenTheWindowIsClosed) {
    type("2215");
    edit->close();
    EXPECT_EQ(picker.dateValue(), at(day + 22 * 3600.0 + 15 * 60.0));
    EXPECT_EQ(actions, 1);
}

TEST_F(DatePickerTest, ADisabledOneTakesNoKey) {
    picker.setEnabled(false);
    press(Qt::Key_Up);
    EXPECT_EQ(picker.dateValue(), at(day + 9 * 3600.0));
    EXPECT_EQ(actions, 0);
}

TEST_F(DatePickerTest, WritesTheTimeAsTheRegionDoes) {
    picker.setDateValue(at(day + 13 * 3600.0));
    const std::pair<const char*, const char*> cases[] = {{"en_US", "9:00 AM"}, {"en_GB", "09:00"}, {"pt_BR", "09:00"},
                                                         {"fi_FI", "9.00"},    {"C", "09:00"},     {"de_DE", "09:00"}};
    for (const auto& [locale, text] : cases) {
        makeIn(locale);
        EXPECT_EQ(edit->text().replace(QChar(0x202f), ' ').toStdString(), text) << locale;
    }
}

TEST_F(DatePickerTest, ATwelveHourClockPicksTheAfternoonToo) {
    makeIn("en_US");
    edit->setSelectedSection(QDateTimeEdit::AmPmSection);
    press(Qt::Key_Up);
    EXPECT_EQ(picker.dateValue(), at(day + 21 * 3600.0));
    EXPECT_EQ(edit->text().replace(QChar(0x202f), ' '), "9:00 PM");
}

} // namespace
