#include "ScheduleEngine.h"

#include "Platform/AppKit/Workspace.h"
#include "Platform/Foundation/RunLoop.h"
#include "Prefs.h"
#include "TimeOfDay.h"
#include "Weakly.h"

#include <utility>

namespace {

constexpr double timerTolerance = 30; // seconds

std::optional<NS::Date> nextOccurrence(std::int64_t minutes, const NS::Date& after) {
    return NS::Calendar::currentCalendar().nextDateAfterDate(after, TimeOfDay::componentsOfMinutes(minutes));
}

} // namespace

std::shared_ptr<ScheduleEngine> ScheduleEngine::create(std::shared_ptr<SleepGuard> sleepGuard) {
    std::shared_ptr<ScheduleEngine> engine(new ScheduleEngine(std::move(sleepGuard)));
    engine->observe();
    return engine;
}

ScheduleEngine::ScheduleEngine(std::shared_ptr<SleepGuard> sleepGuard) : sleepGuard_(std::move(sleepGuard)) {}

void ScheduleEngine::observe() {
    const auto reconcileOn = [this](NS::NotificationCenter center, const std::string& name) {
        auto observer = center.addObserverForName(name, weakly(weak_from_this(), &ScheduleEngine::reconcile));
        observers_.emplace_back(std::move(center), std::move(observer));
    };
    reconcileOn(NS::Workspace::sharedWorkspace().notificationCenter(), NS::NotificationName::WorkspaceDidWake());
    reconcileOn(NS::NotificationCenter::defaultCenter(), NS::NotificationName::SystemClockDidChange());
    reconcileOn(NS::NotificationCenter::defaultCenter(), NS::NotificationName::SystemTimeZoneDidChange());
}

// The timers are left alone: they hold the engine weakly.
ScheduleEngine::~ScheduleEngine() {
    for (auto& [center, observer] : observers_) {
        center.removeObserver(observer);
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
    onTimer_ = armTimer(on, &SleepGuard::activate);
    offTimer_ = armTimer(off, &SleepGuard::deactivate);
}

// The first minute is inside the window, the last outside.
void ScheduleEngine::decide(std::int64_t on, std::int64_t off) {
    const auto now = TimeOfDay::minutesOfDate(NS::Date::date());
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

NS::Timer ScheduleEngine::armTimer(std::int64_t minutes, void (SleepGuard::*change)()) {
    const auto date = nextOccurrence(minutes, NS::Date::date());
    if (!date) {
        return {};
    }
    auto timer =
        NS::Timer::initWithFireDate(*date, /*interval=*/0, /*repeats=*/false, [weak = weak_from_this(), change] {
            if (const auto self = weak.lock()) {
                self->manualOverride = false;
                (self->sleepGuard_.get()->*change)();
                self->reconcile();
            }
        });
    timer.setTolerance(timerTolerance);
    NS::RunLoop::mainRunLoop().addTimer(timer, NS::RunLoopMode::Common);
    return timer;
}
