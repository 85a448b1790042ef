#include "Platform/Linux/Foundation/CalendarNative.h"
#include "Platform/Linux/Seam.h"

#include <QDateTime>
#include <cmath>
#include <limits>

// The rule of Foundation's nextDate (matching the next time, the first of repeated times, forward): the answer is the
// first instant after the start at which the local clock reads the time, or at which a gap ends that skipped this
// reading. A gap of a day or more skips nothing. A reading that comes twice counts twice, unless the start is exactly
// the first of the two. Tests/Data/README.md tells how Foundation was asked. ICU's calendar has these policies too, but
// brings zone data of its own, which may be older than the system's.

namespace Linux {

namespace {

// Instants are whole seconds since 1970 in UTC, readings of the local clock whole seconds since 1970 on that clock.
using Seconds = qint64;

constexpr Seconds minutes = 60;
constexpr Seconds hours = 60 * minutes;
constexpr Seconds day = 24 * hours;
constexpr Seconds never = std::numeric_limits<Seconds>::max();

// Some thirty thousand years either way: sums of seconds are far from overflowing, and so are Qt's milliseconds.
constexpr double farthest = 1e12;

std::optional<Seconds> wholeSeconds(const Date& date) {
    const double seconds = date.timeIntervalSince1970();
    if (!(std::abs(seconds) <= farthest)) { // nor is what is no number
        return {};
    }
    return static_cast<Seconds>(std::floor(seconds));
}

Date dateOf(Seconds instant) {
    return Date::dateWithTimeIntervalSince1970(static_cast<double>(instant));
}

Seconds timeOfDay(Seconds reading) {
    return (reading % day + day) % day;
}

bool isBelow(Seconds end, const std::optional<long>& number) {
    return number && *number >= 0 && *number < end;
}

// Unlike elsewhere, what is unset here does not stand for anything: without all three there is no time of day.
std::optional<Seconds> timeNamedBy(const DateComponents& components) {
    if (!isBelow(24, components.hour) || !isBelow(60, components.minute) || !isBelow(60, components.second)) {
        return {};
    }
    return *components.hour * hours + *components.minute * minutes + *components.second;
}

QDateTime milliseconds(Seconds instant, qint64 more = 0) {
    return QDateTime::fromMSecsSinceEpoch(instant * 1000 + more, Qt::UTC);
}

Seconds nextChange(const QTimeZone& zone, Seconds instant) {
    // A millisecond on: asked at the very last change that the zone's file lists, Qt 6.4 finds none of those that
    // the file's closing rule still brings.
    const auto change = zone.nextTransition(milliseconds(instant, 1)).atUtc;
    return change.isValid() ? change.toSecsSinceEpoch() : never;
}

/// A time under one offset from UTC, from an instant that was asked for to the next change.
struct Stretch {
    Seconds begin;
    Seconds end;
    Seconds offset;
};

Stretch stretchAt(const QTimeZone& zone, Seconds instant) {
    // Kept, since the same days are asked for over and over, and Qt takes its time where it goes by a rule.
    thread_local QTimeZone lastZone;
    thread_local Stretch last = {};
    if (zone != lastZone || instant < last.begin || instant >= last.end) {
        last = {instant, nextChange(zone, instant), zone.offsetFromUtc(milliseconds(instant))};
        lastZone = zone;
    }
    return last;
}

Seconds readingAt(const QTimeZone& zone, Seconds instant) {
    return instant + stretchAt(zone, instant).offset;
}

/// The first instant from `from` on at which the clock shows `time`, or at which it has just skipped that: `admits`
/// says which readings count. A skipped day takes its times with it, so that those of the next one count.
template <class Admits>
Seconds firstInstant(const QTimeZone& zone, Seconds from, Seconds time, Admits admits) {
    const auto next = [time, admits](Seconds earliest) {
        Seconds reading = earliest + timeOfDay(time - earliest);
        while (!admits(reading)) {
            reading += day;
        }
        return reading;
    };
    for (Stretch now = stretchAt(zone, from);;) {
        if (const Seconds instant = next(from + now.offset) - now.offset; instant < now.end) {
            return instant;
        }
        const Stretch later = stretchAt(zone, now.end);
        if (later.offset - now.offset < day && next(now.end + now.offset) < now.end + later.offset) {
            return now.end;
        }
        from = now.end;
        now = later;
    }
}

/// The first instant of the local day of `instant`.
Seconds startOfDay(const QTimeZone& zone, Seconds instant) {
    const Seconds reading = readingAt(zone, instant);
    const Seconds midnight = reading - timeOfDay(reading);
    const auto isFromThatDay = [midnight](Seconds other) { return other >= midnight; };
    // A day can be two days long: so it was where the date line was moved across a place.
    return firstInstant(zone, instant - 2 * day, 0, isFromThatDay);
}

} // namespace

} // namespace Linux

namespace NS {

using namespace Linux;

Calendar Calendar::currentCalendar() {
    return handle<Calendar>(std::make_shared<CalendarNative>(systemTimeZone()));
}

std::optional<Date> Calendar::nextDateAfterDate(const Date& date, const DateComponents& components) const {
    const auto start = wholeSeconds(date);
    const auto time = timeNamedBy(components);
    if (!start || !time) {
        return {};
    }
    const auto& zone = native(*this).zone;
    // What the clock shows at the start does not count, nor does the same reading when it comes again: a timer that
    // fires when it is due is not armed for the repetition.
    const auto isAnother = [shown = readingAt(zone, *start)](Seconds reading) { return reading != shown; };
    return dateOf(firstInstant(zone, *start, *time, isAnother));
}

std::optional<Date> Calendar::dateBySettingHour(long hour, long minute, long second, const Date& date) const {
    const auto instant = wholeSeconds(date);
    const auto time = timeNamedBy({hour, minute, second});
    if (!instant || !time) {
        return {};
    }
    const auto& zone = native(*this).zone;
    const Seconds start = startOfDay(zone, *instant);
    // What the clock skipped before it showed `opening` counts from just before the day; a later time does not: where
    // it was yesterday's last hour that was skipped, today still has it to come.
    const Seconds opening = timeOfDay(readingAt(zone, start));
    const auto any = [](Seconds) { return true; };
    return dateOf(firstInstant(zone, *time > opening ? start : start - 1, *time, any));
}

long Calendar::component(CalendarUnit unit, const Date& date) const {
    const auto instant = wholeSeconds(date);
    if (!instant) {
        return 0;
    }
    const Seconds time = timeOfDay(readingAt(native(*this).zone, *instant));
    return unit == CalendarUnit::Hour ? time / hours : time % hours / minutes;
}

} // namespace NS
