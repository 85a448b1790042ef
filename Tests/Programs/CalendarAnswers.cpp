// Answers questions about the calendar in bulk, each in a line of its own:
//
//     zone <name>                           of the questions that follow; "current", as at first, is the zone in force
//     next <instant> <hour> <minute>        the next date after the instant
//     set <instant> <hour> <minute>         that time on the instant's day
//     time <instant>                        the instant's hour and minute
//
// Instants are seconds since 1970, "-" is no answer.

#include "Platform/Linux/Foundation/CalendarNative.h"

#include <cstdio>
#include <iostream>
#include <string>

namespace {

template <class T>
T read() {
    T value{};
    std::cin >> value;
    return value;
}

NS::Calendar calendarFor(const std::string& zone) {
    if (zone == "current") {
        return NS::Calendar::currentCalendar();
    }
    return Linux::handle<NS::Calendar>(std::make_shared<Linux::CalendarNative>(QTimeZone(zone.c_str())));
}

void print(const std::optional<NS::Date>& date) {
    if (date) {
        std::printf("%.17g\n", date->timeIntervalSince1970());
    } else {
        std::puts("-");
    }
}

void answer(const NS::Calendar& calendar, const std::string& question) {
    const auto date = NS::Date::dateWithTimeIntervalSince1970(read<double>());
    if (question == "time") {
        std::printf("%ld:%ld\n", calendar.component(NS::CalendarUnit::Hour, date),
                    calendar.component(NS::CalendarUnit::Minute, date));
        return;
    }
    const long hour = read<long>();
    const long minute = read<long>();
    print(question == "next" ? calendar.nextDateAfterDate(date, {hour, minute, 0})
                             : calendar.dateBySettingHour(hour, minute, 0, date));
}

} // namespace

int main() {
    std::ios::sync_with_stdio(false);
    auto calendar = NS::Calendar::currentCalendar();
    std::string question;
    while (std::cin >> question) {
        if (question == "zone") {
            std::fflush(stdout); // for those who wait for the answers so far before they go on
            calendar = calendarFor(read<std::string>());
        } else {
            answer(calendar, question);
        }
    }
}
