#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Object.h"

#include <optional>

namespace NS {

enum class CalendarUnit : unsigned long { Hour = 1UL << 5, Minute = 1UL << 6 };

/// Parts of a local date and time (NSDateComponents). What is unset stands for anything.
struct DateComponents {
    std::optional<long> hour;
    std::optional<long> minute;
    std::optional<long> second;
};

/// The user's calendar in the time zone in force (NSCalendar). Ask for it anew each time: a handle keeps its zone.
/// Safe from any thread.
class Calendar : public Object {
public:
    static Calendar currentCalendar();

    /// The first instant strictly after `date` at which the local clock reads hour, minute and second. A time that the
    /// clock skips that day is answered by the first instant after the gap; one that comes twice by the first of the
    /// two, and from between the two by the second (matching policy next time, repeated-time policy first, direction
    /// forward). Nothing when the components name no time of day.
    std::optional<Date> nextDateAfterDate(const Date& date, const DateComponents& components) const;

    /// That time on the local day of `date`, also when it is earlier than `date`, by the same policies.
    std::optional<Date> dateBySettingHour(long hour, long minute, long second, const Date& date) const;

    /// The local clock's hour or minute at `date`. 0 for a date beyond all calendars.
    long component(CalendarUnit unit, const Date& date) const;

    using Object::Object;
};

} // namespace NS
