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

// Instants are whole seconds since 1970 in UTC, local times whole seconds since 1970 on the local clock.
using Seconds = qint64;

constexpr Seconds secondsPerMinute = 60;
constexpr Seconds secondsPerHour = 60 * secondsPerMinute;
constexpr Seconds secondsPerDay = 24 * secondsPerHour;
constexpr Seconds distantFuture = std::numeric_limits<Seconds>::max();

// Some thirty thousand years either way: sums of seconds are far from overflowing, and so are Qt's milliseconds.
constexpr double maxInstant = 1e12;

std::optional<Seconds> wholeSeconds(const Date& date) {
    const double seconds = date.timeIntervalSince1970();
    if (!(std::abs(seconds) <= maxInstant)) { // false for NaN too
        return {};
    }
    return static_cast<Seconds>(std::floor(seconds));
}

Date dateOf(Seconds instant) {
    return Date::dateWithTimeIntervalSince1970(static_cast<double>(instant));
}

Seconds timeOfDay(Seconds localTime) {
    return (localTime % secondsPerDay + secondsPerDay) % secondsPerDay;
}

bool isBelow(Seconds end, const std::optional<long>& number) {
    return number && *number >= 0 && *number < end;
}

// Absent unless hour, minute and second are all set: nothing stands for a component that is not.
std::optional<Seconds> timeOfComponents(const DateComponents& components) {
    if (!isBelow(24, components.hour) || !isBelow(60, components.minute) || !isBelow(60, components.second)) {
        return {};
    }
    return *components.hour * secondsPerHour + *components.minute * secondsPerMinute + *components.second;
}

QDateTime dateTimeAt(Seconds instant, qint64 milliseconds = 0) {
    return QDateTime::fromMSecsSinceEpoch(instant * 1000 + milliseconds, Qt::UTC);
}

Seconds nextChange(const QTimeZone& zone, Seconds instant) {
    // A millisecond on: asked at the very last change that the zone's file lists, Qt 6.4 finds none of those that
    // the file's closing rule still brings.
    const auto change = zone.nextTransition(dateTimeAt(instant, 1)).atUtc;
    return change.isValid() ? change.toSecsSinceEpoch() : distantFuture;
}

/// A period with one offset from UTC, from an instant that was asked for to the next change.
struct OffsetPeriod {
    Seconds begin;
    Seconds end;
    Seconds offset;
};

OffsetPeriod offsetPeriodAt(const QTimeZone& zone, Seconds instant) {
    // Kept, since the same days are asked for over and over, and Qt takes its time where it goes by a rule.
    thread_local QTimeZone lastZone;
    thread_local OffsetPeriod last = {};
    if (zone != lastZone || instant < last.begin || instant >= last.end) {
        last = {instant, nextChange(zone, instant), zone.offsetFromUtc(dateTimeAt(instant))};
        lastZone = zone;
    }
    return last;
}

Seconds localTimeAt(const QTimeZone& zone, Seconds instant) {
    return instant + offsetPeriodAt(zone, instant).offset;
}

/// The first instant from `from` on at which the clock shows `time`, or at which it has just skipped that. Local times
/// that fail the predicate `counts` are passed over. A skipped day has no times: those of the next one count.
template <class Predicate>
Seconds firstInstant(const QTimeZone& zone, Seconds from, Seconds time, Predicate counts) {
    const auto next = [time, counts](Seconds earliest) {
        Seconds localTime = earliest + timeOfDay(time - earliest);
        while (!counts(localTime)) {
            localTime += secondsPerDay;
        }
        return localTime;
    };
    for (OffsetPeriod now = offsetPeriodAt(zone, from);;) {
        if (const Seconds instant = next(from + now.offset) - now.offset; instant < now.end) {
            return instant;
        }
        const OffsetPeriod later = offsetPeriodAt(zone, now.end);
        if (later.offset - now.offset < secondsPerDay && next(now.end + now.offset) < now.end + later.offset) {
            return now.end;
        }
        from = now.end;
        now = later;
    }
}

/// The first instant of the local day of `instant`.
Seconds startOfDay(const QTimeZone& zone, Seconds instant) {
    const Seconds localTime = localTimeAt(zone, instant);
    const Seconds midnight = localTime - timeOfDay(localTime);
    const auto isFromThatDay = [midnight](Seconds other) { return other >= midnight; };
    // A day was two days long where the date line was moved across a place.
    return firstInstant(zone, instant - 2 * secondsPerDay, 0, isFromThatDay);
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
    const auto time = timeOfComponents(components);
    if (!start || !time) {
        return {};
    }
    const auto& zone = native(*this).zone;
    // The local time of the start does not count, nor does its repetition: a timer that fires when it is due is not
    // armed for the repetition.
    const auto isAnother = [shown = localTimeAt(zone, *start)](Seconds localTime) { return localTime != shown; };
    return dateOf(firstInstant(zone, *start, *time, isAnother));
}

std::optional<Date> Calendar::dateBySettingHour(long hour, long minute, long second, const Date& date) const {
    const auto instant = wholeSeconds(date);
    const auto time = timeOfComponents({hour, minute, second});
    if (!instant || !time) {
        return {};
    }
    const auto& zone = native(*this).zone;
    const Seconds start = startOfDay(zone, *instant);
    // A time that the gap at the start of the day skipped counts from just before the day. A later time does not: after
    // a gap in yesterday's last hour, that hour of today is still to come.
    const Seconds firstTime = timeOfDay(localTimeAt(zone, start));
    const auto any = [](Seconds) { return true; };
    return dateOf(firstInstant(zone, *time > firstTime ? start : start - 1, *time, any));
}

long Calendar::component(CalendarUnit unit, const Date& date) const {
    const auto instant = wholeSeconds(date);
    if (!instant) {
        return 0;
    }
    const Seconds time = timeOfDay(localTimeAt(native(*this).zone, *instant));
    return unit == CalendarUnit::Hour ? time / secondsPerHour : time % secondsPerHour / secondsPerMinute;
}

} // namespace NS
