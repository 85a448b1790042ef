#pragma once

#include "Platform/Foundation/Date.h"

#include <functional>
#include <string>
#include <vector>

/// The time of the unit tests: it stands still until a test moves it.
namespace Seam {

/// Puts the user into a zone, such as "Europe/Berlin". Tells nobody.
void setTimeZone(const std::string& identifier);

/// Sets the clock, either way, without doing what is due. Tells nobody.
void setNow(const NS::Date& now);

/// Lets time pass until `date`: everything that falls due happens at its own time.
void runUntil(const NS::Date& date);

/// The machine sleeps until `date`: everyone is told of the waking, then what fell due happens late, all at once.
void sleepUntil(const NS::Date& date);

/// When the timers that are scheduled are due, earliest first.
std::vector<NS::Date> scheduledTimers();

/// Calls `note` before each timer that is scheduled from now on.
void whenTimerIsScheduled(std::function<void()> note);

/// The notifications, as the system posts them.
void announceWake();
void announceClockChange();
void announceTimeZoneChange();

} // namespace Seam
