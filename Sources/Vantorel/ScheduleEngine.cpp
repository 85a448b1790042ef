#include "ScheduleEngine.h"

#include "Platform/AppKit/Workspace.h"
#include "Platform/Foundation/Calendar.h"
#include "Platform/Foundation/RunLoop.h"
#include "Prefs.h"

#include <utility>

namespace {

constexpr double timerTolerance = 30; // seconds

// Minutes after midnight as a time of day. Impossible ones give a time that never comes.
NS::DateComponents timeOfDay(std::int64_t minutes) {
    return {.hour = minutes / 60, .minute = minutes % 60, .second = 0};
}

std::optional<NS::Date> nextOccurrence(std::int64_t minutes, const NS::Date& after) {
    return NS::Calendar::currentCalendar().nextDateAfterDate(after, timeOfDay(minutes));
}

} // namespace

std::shared_ptr<ScheduleEngine> ScheduleEngine::create(std::shared_ptr<SleepGuard> sleepGuard) {
    std::shared_ptr<ScheduleEngine> engine(new ScheduleEngine(std::move(sleepGuard)));
    engine->observe();
    return engine;
}

ScheduleEngine::ScheduleEngine(std::shared_ptr<SleepGuard> sleepGuard) : sleepGuard_(std::move(sleepGuard)) {}

void ScheduleEngine::observe() {
    const auto reconcileOn = [this](NS::NotificationCenter centre, const std::string& name) {
        auto observer = centre.addObserverForName(name, [weak = weak_from_this()](const NS::Notification&) {
            if (const auto self = weak.lock()) {
                self->reconcile();
            }
        });
        observers_.emplace_back(std::move(centre), std::move(observer));
    };
    reconcileOn(NS::Workspace::sharedWorkspace().notificationCenter(), NS::NotificationName::WorkspaceDidWake());
    reconcileOn(NS::NotificationCenter::defaultCenter(), NS::NotificationName::SystemClockDidChange());
    reconcileOn(NS::NotificationCenter::defaultCenter(), NS::NotificationName::SystemTimeZoneDidChange());
}

// The timers are left alone: they hold the engine weakly.
ScheduleEngine::~ScheduleEngine() {
    for (auto& [centre, observer] : observers_) {
        centre.removeObserver(observer);
    }
}

void ScheduleEngine::reconcile() {
    for (auto* timer : {&onTimer_, &offTimer_}) {
        if (*timer) {
            timer->invalidate();
            *timer = NS::Timer();
        }
    }
    if (!Prefs::d().boolForKey(Prefs::scheduleEnabled)) {
        return;
    }
    const auto on = Prefs::d().integerForKey(Prefs::scheduleOnMinutes);
    const auto off = Prefs::d().integerForKey(Prefs::scheduleOffMinutes);
    if (on == off) { // an empty window is no schedule, neither always on nor always off
        return;
    }
    if (manualOverride && boundaryPassed(overrideSetAt)) {
        manualOverride = false;
    }
    if (!manualOverride) {
        decide(on, off);
    }
    onTimer_ = armTimer(on, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->manualOverride = false;
            self->sleepGuard_->activate();
        }
    });
    offTimer_ = armTimer(off, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->manualOverride = false;
            self->sleepGuard_->deactivate();
        }
    });
}

// The first minute is inside the window, the last outside.
void ScheduleEngine::decide(std::int64_t on, std::int64_t off) {
    const auto now = minutesNow();
    const bool acrossMidnight = off < on;
    const bool wanted = acrossMidnight ? now >= on || now < off : on <= now && now < off;
    if (wanted && !sleepGuard_->isActive()) {
        sleepGuard_->activate();
    } else if (!wanted && sleepGuard_->isActive()) {
        sleepGuard_->deactivate();
    }
}

bool ScheduleEngine::boundaryPassed(const NS::Date& since) const {
    for (const char* key : {Prefs::scheduleOnMinutes, Prefs::scheduleOffMinutes}) {
        const auto boundary = nextOccurrence(Prefs::d().integerForKey(key), since);
        if (boundary && *boundary <= NS::Date::date()) {
            return true;
        }
    }
    return false;
}

NS::Timer ScheduleEngine::armTimer(std::int64_t minutes, std::function<void()> fire) {
    const auto date = nextOccurrence(minutes, NS::Date::date());
    if (!date) {
        return {};
    }
    auto timer = NS::Timer::initWithFireDate(*date, /*interval=*/0, /*repeats=*/false,
                                             [fire = std::move(fire), weak = weak_from_this()] {
                                                 fire();
                                                 if (const auto self = weak.lock()) {
                                                     self->reconcile();
                                                 }
                                             });
    timer.setTolerance(timerTolerance);
    NS::RunLoop::mainRunLoop().addTimer(timer, NS::RunLoopMode::Common);
    return timer;
}

std::int64_t ScheduleEngine::minutesNow() {
    const auto now = NS::Date::date();
    const auto calendar = NS::Calendar::currentCalendar();
    return calendar.component(NS::CalendarUnit::Hour, now) * 60 + calendar.component(NS::CalendarUnit::Minute, now);
}
