#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The rules of the schedule stated a second time, as plainly as can be, to hold the engine against: no calendar, only
/// a table of what the local clock reads at each minute, and searches that go through it one minute at a time.
/// Instants are seconds since 1970-01-01 00:00 UTC.
namespace ScheduleRules {

/// The local clock of a zone from one instant to another.
class LocalClock {
public:
    LocalClock(const std::string& zone, double from, double to);

    std::int64_t minuteOfDay(double instant) const;

    /// The first instant after `start` at which the clock reads that time of day, or at which a gap ends that swallowed
    /// it. A gap of a day or more swallows nothing. Of a reading that comes twice both count, but not the second for a
    /// start within the first second of the first. Nothing when the minutes name no time of day.
    std::optional<double> next(double start, std::int64_t minutes) const;

    /// When the clock is set forward or back.
    std::vector<double> changes() const;

private:
    std::int64_t offset(std::int64_t minute) const { return offsets_.at(static_cast<std::size_t>(minute - first_)); }

    std::int64_t first_;                // minutes since 1970
    std::vector<std::int64_t> offsets_; // minutes east of UTC, for each minute
};

struct Settings {
    bool enabled = false;
    std::int64_t on = 0;
    std::int64_t off = 0;
};

/// The guard, the schedule and the world around them.
struct Model {
    double now;
    const LocalClock* clock;
    Settings settings = {};
    bool refuses = false; // the system grants no assertions

    bool active = false;
    int requests = 0; // for an assertion, refused ones included
    std::size_t releases = 0;

    bool manualOverride = false;
    double overrideSetAt = 0;
    std::optional<double> onFires = {}; // the timers
    std::optional<double> offFires = {};

    void activate();
    void deactivate();
    void reconcile();
    /// The user switches the guard by hand.
    void toggle();
    /// What falls due happens, each thing in its time, or now when its time is past.
    void passUntil(double instant);
    /// Nothing happens until the machine wakes; then the waking itself, then what is still overdue.
    void sleepUntil(double instant);

private:
    bool boundaryPassed() const;
    bool inWindow() const;
    void fire(bool on);
};

} // namespace ScheduleRules
