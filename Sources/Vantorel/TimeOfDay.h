#pragma once

#include "Platform/Foundation/Calendar.h"
#include "Platform/Foundation/Date.h"

#include <cstdint>

/// A time of day as the preferences store it: minutes after local midnight.
namespace TimeOfDay {

/// Minutes outside of a day give a time that never comes.
inline NS::DateComponents componentsOfMinutes(std::int64_t minutes) {
    return {.hour = minutes / 60, .minute = minutes % 60, .second = 0};
}

inline std::int64_t minutesOfDate(const NS::Date& date) {
    const auto calendar = NS::Calendar::currentCalendar();
    return calendar.component(NS::CalendarUnit::Hour, date) * 60 + calendar.component(NS::CalendarUnit::Minute, date);
}

} // namespace TimeOfDay
