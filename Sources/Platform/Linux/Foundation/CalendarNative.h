#pragma once

#include "Platform/Foundation/Calendar.h"
#include "Platform/Linux/Native.h"

#include <QTimeZone>

namespace Linux {

struct CalendarNative : Native {
    explicit CalendarNative(const QTimeZone& timeZone) : zone(timeZone) {}

    const QTimeZone zone; // a valid one
};

template <>
struct NativeOf<Calendar> : std::type_identity<CalendarNative> {};

} // namespace Linux
