#pragma once

#include "Platform/Foundation/Calendar.h"
#include "Platform/Linux/Native.h"

#include <QTimeZone>
#include <utility>

namespace NS {

struct CalendarNative : Native {
    explicit CalendarNative(QTimeZone timeZone) : zone(std::move(timeZone)) {}

    const QTimeZone zone; // a valid one
};

} // namespace NS
