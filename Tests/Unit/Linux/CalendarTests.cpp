#include "Platform/Linux/Foundation/CalendarNative.h"
#include "Support/Mounts.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <string>
#include <sys/mount.h>
#include <vector>
#include <zlib.h>

namespace {

NS::Calendar calendarIn(const std::string& zone) {
    return Linux::handle<NS::Calendar>(std::make_shared<Linux::CalendarNative>(QTimeZone(zone.c_str())));
}

NS::Date date(const char* text) {
    const auto parsed = QDateTime::fromString(text, Qt::ISODateWithMs);
    EXPECT_TRUE(parsed.isValid()) << text;
    return NS::Date::dateWithTimeIntervalSince1970(static_cast<double>(parsed.toMSecsSinceEpoch()) / 1000);
}

/// A zone, and questions to its calendar with their answers in UTC.
struct Place {
    const char* zone;

    std::string next(const char* start, const char* time) const {
        const auto [hour, minute, second] = parts(time);
        return text(calendarIn(zone).nextDateAfterDate(date(start), {hour, minute, second}));
    }
    std::string on(const char* instant, const char* time) const {
        const auto [hour, minute, second] = parts(time);
        return text(calendarIn(zone).dateBySettingHour(hour, minute, second, date(instant)));
    }
    std::string reads(const char* instant) const {
        const auto calendar = calendarIn(zone);
        return std::to_string(calendar.component(NS::CalendarUnit::Hour, date(instant))) + ":" +
               std::to_string(calendar.component(NS::CalendarUnit::Minute, date(instant)));
    }

private:
    static std::array<long, 3> parts(const char* time) {
        const auto numbers = QString(time).split(':');
        return {numbers[0].toLong(), numbers[1].toLong(), numbers.value(2).toLong()};
    }

    static std::string text(const std::optional<NS::Date>& answer) {
        if (!answer) {
            return "none";
        }
        const auto seconds = static_cast<qint64>(answer->timeIntervalSince1970());
        EXPECT_EQ(static_cast<double>(seconds), answer->timeIntervalSince1970());
        return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(Qt::ISODate).toStdString();
    }
};

constexpr Place berlin{"Europe/Berlin"};
constexpr Place nuuk{"America/Nuuk"};
constexpr Place apia{"Pacific/Apia"};

TEST(CalendarTests, ATimeStillToComeIsTodays) {
    EXPECT_EQ(berlin.next("2024-06-05T08:59:59+02:00", "9:00"), "2024-06-05T07:00:00Z");
    EXPECT_EQ(berlin.next("2024-06-05T00:00:00+02:00", "23:59:59"), "2024-06-05T21:59:59Z");
}

TEST(CalendarTests, ATimeThatIsPastIsTomorrows) {
    EXPECT_EQ(berlin.next("2024-06-05T09:00:01+02:00", "9:00"), "2024-06-06T07:00:00Z");
}

TEST(CalendarTests, OnTheDotIsPast) {
    EXPECT_EQ(berlin.next("2024-06-05T09:00:00+02:00", "9:00"), "2024-06-06T07:00:00Z");
    EXPECT_EQ(berlin.next("2024-06-05T09:00:00.001+02:00", "9:00"), "2024-06-06T07:00:00Z");
    EXPECT_EQ(berlin.next("2024-06-05T08:59:59.999+02:00", "9:00"), "2024-06-05T07:00:00Z");
}

TEST(CalendarTests, FractionsBefore1970CountForwardToo) {
    EXPECT_EQ(berlin.next("1969-06-05T08:59:59.500+01:00", "9:00"), "1969-06-05T08:00:00Z");
    EXPECT_EQ(berlin.next("1969-06-05T09:00:00.500+01:00", "9:00"), "1969-06-06T08:00:00Z");
    EXPECT_EQ(berlin.reads("1969-06-05T08:59:59.500+01:00"), "8:59");
}

TEST(CalendarTests, SkippedTimesAreAnsweredByTheEndOfTheGap) {
    for (const char* time : {"2:00", "2:00:01", "2:30", "2:59:59", "3:00"}) {
        for (const char* start : {"2024-03-30T12:00:00Z", "2024-03-31T00:59:59Z", "2024-03-31T00:59:59.500Z"}) {
            EXPECT_EQ(berlin.next(start, time), "2024-03-31T01:00:00Z") << time << " after " << start;
        }
    }
    EXPECT_EQ(berlin.next("2024-03-31T00:59:58Z", "1:59:59"), "2024-03-31T00:59:59Z");
    EXPECT_EQ(berlin.next("2024-03-31T00:59:59Z", "1:59:59"), "2024-03-31T23:59:59Z");
    EXPECT_EQ(berlin.next("2024-03-31T00:59:59Z", "3:00:01"), "2024-03-31T01:00:01Z");
    EXPECT_EQ(berlin.next("2024-03-31T01:00:00Z", "2:30"), "2024-04-01T00:30:00Z");
}

TEST(CalendarTests, ATimeThatComesTwiceIsAnsweredTwice) {
    EXPECT_EQ(berlin.next("2024-10-26T23:00:00Z", "2:30"), "2024-10-27T00:30:00Z");
    EXPECT_EQ(berlin.next("2024-10-27T00:30:01Z", "2:30"), "2024-10-27T01:30:00Z");
    EXPECT_EQ(berlin.next("2024-10-27T01:29:59.500Z", "2:30"), "2024-10-27T01:30:00Z");
    EXPECT_EQ(berlin.next("2024-10-27T01:30:00Z", "2:30"), "2024-10-28T01:30:00Z");
}

TEST(CalendarTests, OnTheDotOfTheFirstTheSecondIsPassedOver) {
    for (const char* start : {"2024-10-27T00:30:00Z", "2024-10-27T00:30:00.999Z"}) {
        EXPECT_EQ(berlin.next(start, "2:30"), "2024-10-28T01:30:00Z") << start;
    }
    EXPECT_EQ(berlin.next("2024-10-27T00:29:59.999Z", "2:30"), "2024-10-27T00:30:00Z");
    EXPECT_EQ(berlin.next("2024-10-27T00:31:00Z", "2:30"), "2024-10-27T01:30:00Z");
}

TEST(CalendarTests, HalfAnHourIsSkippedAndRepeatedOnLordHowe) {
    constexpr Place lordHowe{"Australia/Lord_Howe"};
    EXPECT_EQ(lordHowe.next("2024-10-05T12:00:00Z", "2:15"), "2024-10-05T15:30:00Z");
    EXPECT_EQ(lordHowe.next("2024-10-05T12:00:00Z", "2:30"), "2024-10-05T15:30:00Z");
    EXPECT_EQ(lordHowe.next("2024-04-06T12:00:00Z", "1:45"), "2024-04-06T14:45:00Z");
    EXPECT_EQ(lordHowe.next("2024-04-06T14:50:00Z", "1:45"), "2024-04-06T15:15:00Z");
    EXPECT_EQ(lordHowe.next("2024-04-06T14:45:00Z", "1:45"), "2024-04-07T15:15:00Z");
}

TEST(CalendarTests, ChathamChangesAtAQuarterToTheHour) {
    constexpr Place chatham{"Pacific/Chatham"};
    EXPECT_EQ(chatham.next("2024-09-28T12:00:00Z", "3:00"), "2024-09-28T14:00:00Z");
    EXPECT_EQ(chatham.next("2024-04-06T13:15:01Z", "3:00"), "2024-04-06T14:15:00Z");
}

TEST(CalendarTests, TrollSkipsTwoHours) {
    constexpr Place troll{"Antarctica/Troll"};
    EXPECT_EQ(troll.next("2024-03-31T00:00:00Z", "1:00"), "2024-03-31T01:00:00Z");
    EXPECT_EQ(troll.next("2024-03-31T00:00:00Z", "2:59"), "2024-03-31T01:00:00Z");
    EXPECT_EQ(troll.next("2024-10-27T00:00:01Z", "2:00"), "2024-10-27T02:00:00Z");
}

TEST(CalendarTests, AGapMayEndAtMidnight) {
    EXPECT_EQ(nuuk.next("2024-03-31T00:00:00Z", "23:30"), "2024-03-31T01:00:00Z");
    EXPECT_EQ(nuuk.next("2024-03-31T00:00:00Z", "0:00"), "2024-03-31T01:00:00Z");
    EXPECT_EQ(Place{"Asia/Dhaka"}.next("2009-06-19T12:00:00Z", "23:15"), "2009-06-19T17:00:00Z");
}

TEST(CalendarTests, AGapMayBeginAtMidnight) {
    constexpr Place beirut{"Asia/Beirut"};
    EXPECT_EQ(beirut.next("2024-03-30T12:00:00Z", "0:00"), "2024-03-30T22:00:00Z");
    EXPECT_EQ(beirut.on("2024-03-31T12:00:00Z", "0:30"), "2024-03-30T22:00:00Z");
    EXPECT_EQ(beirut.on("2024-03-30T21:59:59Z", "0:30"), "2024-03-29T22:30:00Z");
}

TEST(CalendarTests, ASkippedDayTakesItsTimesAlong) {
    EXPECT_EQ(apia.next("2011-12-29T12:00:00-10:00", "9:00"), "2011-12-30T19:00:00Z");
    EXPECT_EQ(apia.next("2011-12-29T23:59:59-10:00", "0:00"), "2011-12-30T10:00:00Z");
    EXPECT_EQ(apia.on("2011-12-31T09:00:00+14:00", "0:00"), "2011-12-30T10:00:00Z");
}

TEST(CalendarTests, ADayCanLastTwo) {
    constexpr Place kwajalein{"Pacific/Kwajalein"};
    EXPECT_EQ(kwajalein.on("1969-09-30T23:59:00-12:00", "0:30"), "1969-09-29T13:30:00Z");
}

TEST(CalendarTests, SettingATimeStaysOnTheDay) {
    EXPECT_EQ(berlin.on("2024-06-05T00:00:00+02:00", "9:00"), "2024-06-05T07:00:00Z");
    EXPECT_EQ(berlin.on("2024-06-05T23:59:59.999+02:00", "9:00"), "2024-06-05T07:00:00Z");
    EXPECT_EQ(berlin.on("2024-06-05T12:00:00+02:00", "0:00"), "2024-06-04T22:00:00Z");
    EXPECT_EQ(berlin.on("2024-06-05T12:00:00+02:00", "23:59:59"), "2024-06-05T21:59:59Z");
}

TEST(CalendarTests, SettingATimeTakesTheEndOfAGapAndTheFirstOfTwo) {
    EXPECT_EQ(berlin.on("2024-03-31T12:00:00Z", "2:30"), "2024-03-31T01:00:00Z");
    EXPECT_EQ(berlin.on("2024-10-27T12:00:00Z", "2:30"), "2024-10-27T00:30:00Z");
    EXPECT_EQ(berlin.on("2024-10-27T00:30:00Z", "2:30"), "2024-10-27T00:30:00Z");
}

TEST(CalendarTests, WhatYesterdayLostTodayStillHas) {
    EXPECT_EQ(nuuk.on("2024-03-31T12:00:00Z", "23:30"), "2024-04-01T00:30:00Z");
    EXPECT_EQ(nuuk.on("2024-03-31T12:00:00Z", "0:00"), "2024-03-31T01:00:00Z");
    EXPECT_EQ(nuuk.on("2024-03-30T12:00:00Z", "23:30"), "2024-03-31T01:00:00Z");
}

TEST(CalendarTests, ADayThatYesterdayInterruptsBeginsOnce) {
    // A minute into the day the clock goes back an hour, into the day before.
    constexpr Place stJohns{"America/St_Johns"};
    EXPECT_EQ(stJohns.on("2004-10-31T12:00:00Z", "0:00"), "2004-10-31T02:30:00Z");
    EXPECT_EQ(stJohns.on("2004-10-31T12:00:00Z", "23:01"), "2004-10-31T02:31:00Z");
    EXPECT_EQ(stJohns.on("2004-10-31T02:45:00Z", "12:00"), "2004-10-30T14:30:00Z");
}

TEST(CalendarTests, AWrittenRuleIsAZoneToo) {
    constexpr Place rule{"EST5EDT,M3.2.0,M11.1.0"};
    EXPECT_EQ(rule.next("2024-03-10T06:00:00Z", "2:30"), "2024-03-10T07:00:00Z");
    EXPECT_EQ(rule.next("2150-03-08T06:00:00Z", "2:30"), "2150-03-08T07:00:00Z");
}

TEST(CalendarTests, TheRulesGoOnBeyondTheZonesTable) {
    EXPECT_EQ(berlin.next("2037-10-25T01:00:00Z", "9:00"), "2037-10-25T08:00:00Z"); // the table's last change
    EXPECT_EQ(berlin.next("2038-03-28T00:00:00Z", "2:30"), "2038-03-28T01:00:00Z");
    EXPECT_EQ(berlin.next("2150-03-29T00:00:00Z", "2:30"), "2150-03-29T01:00:00Z");
    EXPECT_EQ(berlin.next("2150-10-25T00:30:01Z", "2:30"), "2150-10-25T01:30:00Z");
}

TEST(CalendarTests, TheDistantPastKeepsTheSunsTime) {
    const auto newYork = calendarIn("America/New_York"); // 4:56:02 behind Greenwich by its own noon
    const auto past = NS::Date::distantPast();
    const auto ten = past.dateByAddingTimeInterval(14 * 3600 + 56 * 60 + 2);
    EXPECT_EQ(newYork.nextDateAfterDate(past, {10, 0, 0}), ten);
    EXPECT_EQ(newYork.nextDateAfterDate(ten, {10, 0, 0}), ten.dateByAddingTimeInterval(86400));
    EXPECT_EQ(newYork.dateBySettingHour(10, 0, 0, ten), ten);
    EXPECT_EQ(newYork.component(NS::CalendarUnit::Minute, ten.dateByAddingTimeInterval(-1)), 59);
}

TEST(CalendarTests, WhatIsNoTimeOfDayHasNoAnswer) {
    constexpr long most = std::numeric_limits<long>::max();
    constexpr long least = std::numeric_limits<long>::min();
    const auto calendar = calendarIn("Europe/Berlin");
    const auto now = date("2024-06-05T12:00:00Z");
    const long impossible[][3] = {{24, 0, 0}, {-1, 0, 0},   {0, -1, 0},   {0, 60, 0},    {0, 0, -1},
                                  {0, 0, 60}, {0, 0, most}, {most, 0, 0}, {0, least, 0}, {1666, 40, 0}};
    for (const auto& [hour, minute, second] : impossible) {
        EXPECT_FALSE(calendar.nextDateAfterDate(now, {hour, minute, second})) << hour << ':' << minute << ':' << second;
        EXPECT_FALSE(calendar.dateBySettingHour(hour, minute, second, now)) << hour << ':' << minute << ':' << second;
    }
}

TEST(CalendarTests, ATimeOfDayHasAllThreeParts) {
    const auto calendar = calendarIn("Europe/Berlin");
    const auto now = date("2024-06-05T12:00:00Z");
    EXPECT_FALSE(calendar.nextDateAfterDate(now, {{}, 30, 0}));
    EXPECT_FALSE(calendar.nextDateAfterDate(now, {9, {}, 0}));
    EXPECT_FALSE(calendar.nextDateAfterDate(now, {9, 30, {}}));
}

TEST(CalendarTests, BeyondAllTimeThereIsNoAnswer) {
    const auto calendar = calendarIn("Europe/Berlin");
    for (const double seconds : {1e18, -1e18, std::numeric_limits<double>::infinity(), std::nan("")}) {
        const auto beyond = NS::Date::dateWithTimeIntervalSince1970(seconds);
        EXPECT_FALSE(calendar.nextDateAfterDate(beyond, {9, 0, 0})) << seconds;
        EXPECT_FALSE(calendar.dateBySettingHour(9, 0, 0, beyond)) << seconds;
        EXPECT_EQ(calendar.component(NS::CalendarUnit::Hour, beyond), 0) << seconds;
        EXPECT_EQ(calendar.component(NS::CalendarUnit::Minute, beyond), 0) << seconds;
    }
}

TEST(CalendarTests, TheHourAndMinuteAreTheLocalClocks) {
    EXPECT_EQ(berlin.reads("2024-03-31T00:59:59.999Z"), "1:59");
    EXPECT_EQ(berlin.reads("2024-03-31T01:00:00Z"), "3:0");
    EXPECT_EQ(Place{"Asia/Kathmandu"}.reads("2024-06-05T18:15:00Z"), "0:0");
    EXPECT_EQ(Place{"UTC"}.reads("2024-06-05T23:59:59Z"), "23:59");
}

/// The rows of a table that Foundation 6.3.1 answered, each question with its answer last, without the heading.
std::vector<QStringList> foundationAnswers(const char* name) {
    QByteArray text;
    const gzFile file = gzopen((std::string(TEST_DATA "/") + name).c_str(), "rb");
    char buffer[1 << 16];
    for (int count = 0; file && (count = gzread(file, buffer, sizeof buffer)) > 0;) {
        text.append(buffer, count);
    }
    EXPECT_EQ(gzclose(file), Z_OK);
    std::vector<QStringList> rows;
    for (const auto& line : text.trimmed().split('\n')) {
        rows.push_back(QString::fromLatin1(line).split('\t'));
    }
    rows.erase(rows.begin());
    return rows;
}

NS::Calendar& cachedCalendarIn(const QString& zone) {
    static std::map<QString, NS::Calendar> calendars;
    auto& calendar = calendars[zone];
    if (!calendar) {
        calendar = calendarIn(zone.toStdString());
    }
    return calendar;
}

QString written(const std::optional<NS::Date>& answer) {
    return answer ? QString::number(answer->timeIntervalSince1970(), 'f', 0) : "-";
}

/// Foundation's answers, with the zones that it had when it gave them: later editions know better about some days long
/// past.
struct FoundationsCalendar : testing::Test {
    void SetUp() override {
        ASSERT_TRUE(Seam::ownMounts());
        ASSERT_EQ(mount("tmpfs", "/usr/share/zoneinfo", "tmpfs", 0, nullptr), 0);
        ASSERT_EQ(std::system("/usr/sbin/zic -b fat -d /usr/share/zoneinfo '" TEST_DATA "/tzdata-2025b.zi'"), 0);
    }
};

TEST_F(FoundationsCalendar, NextDates) {
    const auto rows = foundationAnswers("calendar-next-date.tsv.gz");
    EXPECT_EQ(rows.size(), 17840U);
    for (const auto& row : rows) {
        const auto start = NS::Date::dateWithTimeIntervalSince1970(row[1].toDouble());
        const NS::DateComponents time{row[2].toLong(), row[3].toLong(), 0};
        const auto answer = cachedCalendarIn(row[0]).nextDateAfterDate(start, time);
        EXPECT_EQ(written(answer), row[4]) << row.join(' ').toStdString();
    }
}

TEST_F(FoundationsCalendar, TimesOfDay) {
    const auto rows = foundationAnswers("calendar-time-of-day.tsv.gz");
    EXPECT_EQ(rows.size(), 16838U);
    for (const auto& row : rows) {
        const auto instant = NS::Date::dateWithTimeIntervalSince1970(row[1].toDouble());
        const long minutes = row[2].toLong();
        const auto answer = cachedCalendarIn(row[0]).dateBySettingHour(minutes / 60, minutes % 60, 0, instant);
        EXPECT_EQ(written(answer), row[3]) << row.join(' ').toStdString();
    }
}

} // namespace
