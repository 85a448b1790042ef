#include "Platform/Foundation/Calendar.h"

#include "Platform/macOS/Conversions.h"

namespace macOS {

namespace {

// NSCalendar raises an exception for any number of matching policies but one. The direction is forward because it is
// not said to be backward.
constexpr NSCalendarOptions policies = NSCalendarMatchNextTime | NSCalendarMatchFirst;

// What is not set here stays NSDateComponentUndefined: a zero would be a demand.
NSDateComponents* toNSDateComponents(const DateComponents& components) {
    NSDateComponents* result = [[NSDateComponents alloc] init];
    if (components.hour) {
        [result setHour:*components.hour];
    }
    if (components.minute) {
        [result setMinute:*components.minute];
    }
    if (components.second) {
        [result setSecond:*components.second];
    }
    return result;
}

std::optional<Date> toOptionalDate(NSDate* date) {
    return date ? std::optional(toDate(date)) : std::nullopt;
}

} // namespace

} // namespace macOS

namespace NS {

using namespace macOS;

static_assert(static_cast<NSUInteger>(CalendarUnit::Hour) == NSCalendarUnitHour);
static_assert(static_cast<NSUInteger>(CalendarUnit::Minute) == NSCalendarUnitMinute);

Calendar Calendar::currentCalendar() {
    return handle<Calendar>([NSCalendar currentCalendar]);
}

std::optional<Date> Calendar::nextDateAfterDate(const Date& date, const DateComponents& components) const {
    return toOptionalDate([object<NSCalendar>(*this) nextDateAfterDate:toNSDate(date)
                                                    matchingComponents:toNSDateComponents(components)
                                                               options:policies]);
}

std::optional<Date> Calendar::dateBySettingHour(long hour, long minute, long second, const Date& date) const {
    return toOptionalDate([object<NSCalendar>(*this) dateBySettingHour:hour
                                                                minute:minute
                                                                second:second
                                                                ofDate:toNSDate(date)
                                                               options:policies]);
}

long Calendar::component(CalendarUnit unit, const Date& date) const {
    return [object<NSCalendar>(*this) component:static_cast<NSCalendarUnit>(unit) fromDate:toNSDate(date)];
}

} // namespace NS
