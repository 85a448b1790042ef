#include "Clock.h"

#include "Platform/AppKit/Workspace.h"
#include "Platform/Linux/Seam.h"

#include <QTimeZone>
#include <algorithm>
#include <list>

namespace Seam {

namespace {

NS::Date now = NS::Date::dateWithTimeIntervalSince1970(1'700'000'000);
QTimeZone zone("UTC");
std::function<void()> noteTimer = [] {};

class VirtualAlarm : public Linux::Alarm {
public:
    VirtualAlarm(const NS::Date& date, bool isDelay, std::function<void()> callback)
        : date(date), isDelay(isDelay), callback(std::move(callback)) {
        noteTimer();
        all().push_back(this);
    }
    ~VirtualAlarm() override { std::erase(all(), this); }

    static std::vector<VirtualAlarm*>& all() {
        static std::vector<VirtualAlarm*> alarms;
        return alarms;
    }

    static VirtualAlarm* earliest() {
        const auto first = std::min_element(all().begin(), all().end(),
                                            [](const auto* a, const auto* b) { return a->date < b->date; });
        return first == all().end() ? nullptr : *first;
    }

    void goOff() {
        const auto last = callback; // which may destroy this alarm
        std::erase(all(), this);
        last();
    }

    NS::Date date; // on the wall clock as it is set now
    const bool isDelay;
    const std::function<void()> callback;
};

} // namespace

void setTimeZone(const std::string& identifier) {
    zone = QTimeZone(QByteArray::fromStdString(identifier));
    Q_ASSERT(zone.isValid());
}

void setNow(const NS::Date& instant) {
    const double change = instant.timeIntervalSince1970() - now.timeIntervalSince1970();
    for (auto* alarm : VirtualAlarm::all()) {
        if (alarm->isDelay) {
            alarm->date = alarm->date.dateByAddingTimeInterval(change);
        }
    }
    now = instant;
}

void runUntil(const NS::Date& date) {
    for (auto* alarm = VirtualAlarm::earliest(); alarm && alarm->date <= date; alarm = VirtualAlarm::earliest()) {
        now = std::max(now, alarm->date);
        alarm->goOff();
    }
    now = date;
}

void sleepUntil(const NS::Date& date) {
    now = date;
    announceWake();
    runUntil(date);
}

std::vector<NS::Date> scheduledTimers() {
    std::vector<NS::Date> dates;
    for (const auto* alarm : VirtualAlarm::all()) {
        dates.push_back(alarm->date);
    }
    std::sort(dates.begin(), dates.end());
    return dates;
}

void whenTimerIsScheduled(std::function<void()> note) {
    noteTimer = std::move(note);
}

void announceWake() {
    NS::Workspace::sharedWorkspace().notificationCenter().postNotificationName(
        NS::NotificationName::WorkspaceDidWake());
}

void announceClockChange() {
    NS::NotificationCenter::defaultCenter().postNotificationName(NS::NotificationName::SystemClockDidChange());
}

void announceTimeZoneChange() {
    NS::NotificationCenter::defaultCenter().postNotificationName(NS::NotificationName::SystemTimeZoneDidChange());
}

} // namespace Seam

namespace Linux {

Date now() {
    return Seam::now;
}

QTimeZone systemTimeZone() {
    return Seam::zone;
}

std::unique_ptr<Alarm> makeAlarm(const Date& date, std::function<void()> callback) {
    return std::make_unique<Seam::VirtualAlarm>(date, false, std::move(callback));
}

std::unique_ptr<Alarm> makeDelay(double seconds, std::function<void()> callback) {
    return std::make_unique<Seam::VirtualAlarm>(Seam::now.dateByAddingTimeInterval(seconds), true, std::move(callback));
}

void callAfter(double seconds, std::function<void()> callback) {
    static auto& pending = *new std::list<std::unique_ptr<Alarm>>; // which the alarms' own list may not outlive
    const auto place = pending.emplace(pending.end());
    *place = makeDelay(seconds, [place, callback = std::move(callback)] {
        const auto last = callback; // this alarm ends here
        pending.erase(place);
        last();
    });
}

std::shared_ptr<void> watchSystem(const NotificationCenter&) {
    return nullptr; // the tests announce what happens
}

} // namespace Linux
