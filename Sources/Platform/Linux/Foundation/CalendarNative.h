#pragma once

#include "Platform/Foundation/Calendar.h"
#include "Platform/Linux/Native.h"

#include <QTimeZone>
#include <utility>

namespace Linux {

struct CalendarNative : Native {
    explicit CalendarNative(QTimeZone timeZone) : zone(std::move(timeZone)) {}

    const QTimeZone zone; // a valid one
};

template <>
struct NativeOf<Calendar> : std::type_identity<CalendarNative> {};

} // namespace Linux
