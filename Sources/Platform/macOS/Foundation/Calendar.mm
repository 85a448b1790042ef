#include "Platform/Foundation/Calendar.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

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

DateComponents Calendar::hourAndMinuteOfDate(const Date& date) const {
    NSDateComponents* components = [object<NSCalendar>(*this) components:NSCalendarUnitHour | NSCalendarUnitMinute
                                                                fromDate:toNSDate(date)];
    return {.hour = [components hour], .minute = [components minute], .second = std::nullopt};
}

} // namespace NS
