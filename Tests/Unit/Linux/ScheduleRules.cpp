#include "ScheduleRules.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace ScheduleRules {

namespace {

constexpr std::int64_t hour = 60;
constexpr std::int64_t day = 24 * hour;

std::int64_t minuteOf(double instant) {
    return static_cast<std::int64_t>(std::floor(instant / 60));
}

/// Into 0 to 1439.
std::int64_t withinDay(std::int64_t minutes) {
    return ((minutes % day) + day) % day;
}

std::int64_t offsetOf(const QTimeZone& zone, std::int64_t minute) {
    const int seconds = zone.offsetFromUtc(QDateTime::fromSecsSinceEpoch(minute * 60, Qt::UTC));
    if (seconds % 60 != 0) {
        throw std::domain_error("an offset that is no whole number of minutes");
    }
    return seconds / 60;
}

} // namespace

LocalClock::LocalClock(const std::string& zone, double from, double to) : first_(minuteOf(from)) {
    const QTimeZone rules(QByteArray::fromStdString(zone));
    const std::int64_t end = minuteOf(to);
    offsets_.reserve(static_cast<std::size_t>(end - first_ + hour));
    for (std::int64_t start = first_; start < end; start += hour) {
        const std::int64_t before = offsetOf(rules, start);
        const bool changes = offsetOf(rules, start + hour) != before;
        for (std::int64_t minute = start; minute < start + hour; ++minute) {
            offsets_.push_back(changes ? offsetOf(rules, minute) : before);
        }
    }
}

std::int64_t LocalClock::minuteOfDay(double instant) const {
    return withinDay(minuteOf(instant) + offset(minuteOf(instant)));
}

std::optional<double> LocalClock::next(double start, std::int64_t minutes) const {
    if (minutes / 60 < 0 || minutes / 60 > 23 || minutes % 60 < 0) {
        return std::nullopt;
    }
    const std::int64_t startMinute = std::max(minuteOf(start), first_);
    const bool onTheDot = start - static_cast<double>(startMinute) * 60 < 1;
    for (std::int64_t minute = startMinute + 1; minute < first_ + std::ssize(offsets_); ++minute) {
        const std::int64_t reading = minute + offset(minute); // date and time, as the clock shows them
        if (withinDay(reading) == minutes) {
            if (onTheDot && reading == startMinute + offset(startMinute)) {
                continue;
            }
            return static_cast<double>(minute) * 60;
        }
        const std::int64_t expected = minute + offset(minute - 1);
        const std::int64_t gap = reading - expected;
        if (gap > 0 && gap < day && withinDay(minutes - expected) < gap) {
            return static_cast<double>(minute) * 60;
        }
    }
    throw std::out_of_range("no such time of day to the end of the table");
}

std::vector<double> LocalClock::changes() const {
    std::vector<double> instants;
    for (std::int64_t minute = first_ + 1; minute < first_ + std::ssize(offsets_); ++minute) {
        if (offset(minute) != offset(minute - 1)) {
            instants.push_back(static_cast<double>(minute) * 60);
        }
    }
    return instants;
}

void Model::activate() {
    if (!active) {
        ++requests;
        active = !refuses;
    }
}

void Model::deactivate() {
    if (active) {
        ++releases;
        active = false;
    }
}

void Model::reconcile() {
    onFires.reset();
    offFires.reset();
    if (!settings.enabled || settings.on == settings.off) {
        return;
    }
    if (manualOverride && boundaryPassed()) {
        manualOverride = false;
    }
    if (!manualOverride) {
        inWindow() ? activate() : deactivate();
    }
    onFires = clock->next(now, settings.on);
    offFires = clock->next(now, settings.off);
}

bool Model::boundaryPassed() const {
    const auto isPast = [this](std::int64_t minutes) {
        const auto boundary = clock->next(overrideSetAt, minutes);
        return boundary && *boundary <= now;
    };
    return isPast(settings.on) || isPast(settings.off);
}

bool Model::inWindow() const {
    const std::int64_t time = clock->minuteOfDay(now);
    if (settings.on < settings.off) {
        return time >= settings.on && time < settings.off;
    }
    return !(time >= settings.off && time < settings.on);
}

void Model::toggle() {
    active ? deactivate() : activate();
    if (settings.enabled) {
        manualOverride = true;
        overrideSetAt = now;
    }
}

void Model::fire(bool on) {
    manualOverride = false;
    on ? activate() : deactivate();
    reconcile();
}

void Model::passUntil(double instant) {
    while (onFires || offFires) {
        // Of two that are due at once, the one that was armed first.
        const bool on = onFires && (!offFires || *onFires <= *offFires);
        const double due = on ? *onFires : *offFires;
        if (due > instant) {
            break;
        }
        now = std::max(now, due);
        fire(on);
    }
    now = instant;
}

void Model::sleepUntil(double instant) {
    now = instant;
    reconcile();
    passUntil(instant);
}

} // namespace ScheduleRules
