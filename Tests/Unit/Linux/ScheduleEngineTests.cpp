#include "ScheduleEngine.h"

#include "Platform/AppKit/Workspace.h"
#include "Platform/Linux/Foundation/NotificationCenterNative.h"
#include "Platform/Linux/Foundation/TimerNative.h"
#include "Prefs.h"
#include "Seam/Clock.h"
#include "Seam/Power.h"

#include <QDateTime>
#include <QTimeZone>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr const char* home = "Europe/Berlin";

/// That local time in the zone of the tests, on 2024-05-06 unless another day is named.
NS::Date at(const char* time, const char* day = "2024-05-06") {
    const QDateTime local(QDate::fromString(day, Qt::ISODate), QTime::fromString(time, Qt::ISODate), QTimeZone(home));
    return NS::Date::dateWithTimeIntervalSince1970(static_cast<double>(local.toMSecsSinceEpoch()) / 1000);
}

constexpr const char* tomorrow = "2024-05-07";

struct ScheduleEngineTest : testing::Test {
    ScheduleEngineTest() {
        Prefs::registerDefaults();
        Seam::setTimeZone(home);
        schedule(540, 1020);
        sleepGuard->onChange = [this](bool active) { changes.push_back(active); };
    }

    static void schedule(std::int64_t on, std::int64_t off) {
        Prefs::d().setBool(true, Prefs::scheduleEnabled);
        Prefs::d().setInteger(on, Prefs::scheduleOnMinutes);
        Prefs::d().setInteger(off, Prefs::scheduleOffMinutes);
    }

    /// Whether the schedule wants the guard on at that time.
    bool wantedAt(const char* time) {
        Seam::setNow(at(time));
        engine->manualOverride = false;
        engine->reconcile();
        return sleepGuard->isActive();
    }

    void toggleByHand() {
        engine->manualOverride = true;
        engine->overrideSetAt = NS::Date::date();
        sleepGuard->toggle();
    }

    std::shared_ptr<SleepGuard> sleepGuard = std::make_shared<SleepGuard>();
    std::shared_ptr<ScheduleEngine> engine = ScheduleEngine::create(sleepGuard);
    std::vector<bool> changes;
};

TEST_F(ScheduleEngineTest, StartsWithoutTimersOverrideOrDecision) {
    EXPECT_FALSE(engine->manualOverride);
    EXPECT_EQ(engine->overrideSetAt, NS::Date::distantPast());
    EXPECT_TRUE(Seam::scheduledTimers().empty());
    EXPECT_TRUE(changes.empty());
}

TEST_F(ScheduleEngineTest, MakingOneDecidesNothing) {
    Seam::setNow(at("10:00:00"));
    const auto another = ScheduleEngine::create(sleepGuard);
    EXPECT_TRUE(changes.empty());
    EXPECT_TRUE(Seam::scheduledTimers().empty());
}

TEST_F(ScheduleEngineTest, ItsEndLeavesNoObserverBehind) {
    const auto observers = [] {
        return std::pair(Linux::native(NS::Workspace::sharedWorkspace().notificationCenter()).registrations.size(),
                         Linux::native(NS::NotificationCenter::defaultCenter()).registrations.size());
    };
    EXPECT_EQ(observers(), (std::pair<std::size_t, std::size_t>(1, 2)));
    engine = nullptr;
    EXPECT_EQ(observers(), (std::pair<std::size_t, std::size_t>(0, 0)));
}

TEST_F(ScheduleEngineTest, ATimerThatFiresLateEndsTheOverrideAndActsBeforeThePresentDecides) {
    std::vector<bool> overriddenAtChange;
    sleepGuard->onChange = [&](bool active) {
        changes.push_back(active);
        overriddenAtChange.push_back(engine->manualOverride);
    };
    Seam::setNow(at("08:00:00"));
    engine->reconcile();
    Seam::setNow(at("20:00:00")); // and nobody says so
    engine->manualOverride = true;
    engine->overrideSetAt = at("23:00:00");
    Seam::runUntil(at("20:00:00"));
    EXPECT_EQ(changes, (std::vector{true, false}));
    EXPECT_EQ(overriddenAtChange, (std::vector{false, false}));
    EXPECT_FALSE(engine->manualOverride);
}

TEST_F(ScheduleEngineTest, TheTimerOfTheOnTimeIsArmedFirst) {
    std::vector<std::vector<NS::Date>> armedBefore;
    Seam::whenTimerIsScheduled([&] { armedBefore.push_back(Seam::scheduledTimers()); });
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    EXPECT_EQ(armedBefore, (std::vector<std::vector<NS::Date>>{{}, {at("09:00:00", tomorrow)}}));
    Seam::whenTimerIsScheduled([] {});
}

TEST_F(ScheduleEngineTest, ADisabledScheduleLeavesTheGuardAndDropsTheTimers) {
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    ASSERT_EQ(Seam::scheduledTimers().size(), 2U);
    Prefs::d().setBool(false, Prefs::scheduleEnabled);
    engine->manualOverride = true;
    Seam::setNow(at("20:00:00"));
    engine->reconcile();
    EXPECT_TRUE(sleepGuard->isActive());
    EXPECT_TRUE(Seam::scheduledTimers().empty());
    EXPECT_TRUE(engine->manualOverride);
}

TEST_F(ScheduleEngineTest, AnEmptyWindowIsNoSchedule) {
    for (const std::int64_t minutes : {0, 540, 1439}) {
        schedule(minutes, minutes);
        EXPECT_FALSE(wantedAt("09:00:00"));
        sleepGuard->activate();
        EXPECT_TRUE(wantedAt("08:00:00"));
        sleepGuard->deactivate();
        EXPECT_TRUE(Seam::scheduledTimers().empty());
    }
}

TEST_F(ScheduleEngineTest, AWindowWithinADayHasItsFirstMinuteAndNotItsLast) {
    EXPECT_FALSE(wantedAt("00:00:00"));
    EXPECT_FALSE(wantedAt("08:59:59"));
    EXPECT_TRUE(wantedAt("09:00:00"));
    EXPECT_TRUE(wantedAt("16:59:59"));
    EXPECT_FALSE(wantedAt("17:00:00"));
    EXPECT_FALSE(wantedAt("23:59:59"));
}

TEST_F(ScheduleEngineTest, AWindowAcrossMidnight) {
    schedule(1320, 360);
    EXPECT_FALSE(wantedAt("21:59:59"));
    EXPECT_TRUE(wantedAt("22:00:00"));
    EXPECT_TRUE(wantedAt("23:30:00"));
    EXPECT_TRUE(wantedAt("00:00:00"));
    EXPECT_TRUE(wantedAt("05:59:59"));
    EXPECT_FALSE(wantedAt("06:00:00"));
    EXPECT_FALSE(wantedAt("12:00:00"));
}

TEST_F(ScheduleEngineTest, TheWantedStateIsNotSwitchedAgain) {
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    engine->reconcile();
    EXPECT_EQ(changes, std::vector{true});
    EXPECT_EQ(Seam::power().creations, 1);
    Seam::setNow(at("18:00:00"));
    engine->reconcile();
    engine->reconcile();
    EXPECT_EQ(changes, (std::vector{true, false}));
}

TEST_F(ScheduleEngineTest, ARefusedAssertionIsTriedAgainAtEachDecision) {
    Seam::power().refuses = true;
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    engine->reconcile();
    EXPECT_EQ(Seam::power().creations, 2);
    Seam::power().refuses = false;
    engine->reconcile();
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(ScheduleEngineTest, ArmsBothTimersForTheirNextOccurrences) {
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    EXPECT_EQ(Seam::scheduledTimers(), (std::vector{at("17:00:00"), at("09:00:00", tomorrow)}));
}

TEST_F(ScheduleEngineTest, ItsTimersFireOnceAndMayBeHalfAMinuteLate) {
    engine->reconcile();
    ASSERT_EQ(Linux::TimerNative::scheduled().size(), 2U);
    for (const auto& timer : Linux::TimerNative::scheduled()) {
        EXPECT_EQ(timer->tolerance, 30);
        EXPECT_FALSE(timer->repeats);
    }
}

TEST_F(ScheduleEngineTest, ATimeThatIsNowIsArmedForTomorrow) {
    Seam::setNow(at("09:00:00"));
    engine->reconcile();
    EXPECT_EQ(Seam::scheduledTimers(), (std::vector{at("17:00:00"), at("09:00:00", tomorrow)}));
}

TEST_F(ScheduleEngineTest, ReconcilingAgainReplacesTheTimers) {
    Seam::setNow(at("10:00:00"));
    for (int i = 0; i < 5; ++i) {
        engine->reconcile();
    }
    EXPECT_EQ(Seam::scheduledTimers().size(), 2U);
}

TEST_F(ScheduleEngineTest, SwitchesAtItsTimesDayAfterDay) {
    Seam::setNow(at("08:00:00"));
    engine->reconcile();
    Seam::runUntil(at("08:59:59"));
    EXPECT_FALSE(sleepGuard->isActive());
    Seam::runUntil(at("09:00:00"));
    EXPECT_TRUE(sleepGuard->isActive());
    Seam::runUntil(at("16:59:59"));
    EXPECT_TRUE(sleepGuard->isActive());
    Seam::runUntil(at("17:00:00"));
    EXPECT_FALSE(sleepGuard->isActive());
    Seam::runUntil(at("09:00:00", tomorrow));
    EXPECT_TRUE(sleepGuard->isActive());
    EXPECT_EQ(changes, (std::vector{true, false, true}));
}

TEST_F(ScheduleEngineTest, ATimerSwitchesEvenWhatTheWindowWouldNot) {
    // The off time comes while a guard was switched on by hand outside the window.
    Seam::setNow(at("16:00:00"));
    engine->reconcile();
    toggleByHand();
    toggleByHand();
    Seam::runUntil(at("17:00:00"));
    EXPECT_FALSE(sleepGuard->isActive());
    EXPECT_FALSE(engine->manualOverride);
}

TEST_F(ScheduleEngineTest, AManualToggleHoldsThroughEveryDecisionUntilTheNextTime) {
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    toggleByHand();
    ASSERT_FALSE(sleepGuard->isActive());
    Seam::runUntil(at("12:00:00"));
    Seam::announceWake();
    Seam::announceClockChange();
    Seam::announceTimeZoneChange();
    EXPECT_FALSE(sleepGuard->isActive());
    EXPECT_TRUE(engine->manualOverride);
    EXPECT_EQ(Seam::scheduledTimers().size(), 2U);
    Seam::runUntil(at("17:00:00"));
    EXPECT_FALSE(engine->manualOverride);
    EXPECT_FALSE(sleepGuard->isActive());
    Seam::runUntil(at("09:00:00", tomorrow));
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(ScheduleEngineTest, AManualToggleStartsNoDecision) {
    Seam::setNow(at("20:00:00"));
    engine->reconcile();
    toggleByHand();
    EXPECT_TRUE(sleepGuard->isActive());
    EXPECT_EQ(Seam::scheduledTimers().size(), 2U);
}

TEST_F(ScheduleEngineTest, SleepingThroughABoundaryEndsTheOverrideOnWaking) {
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    toggleByHand();
    Seam::setNow(at("10:00:00", tomorrow)); // both timers are still to come, as on a machine that has just woken
    Seam::announceWake();
    EXPECT_FALSE(engine->manualOverride);
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(ScheduleEngineTest, WakingWithTimersOverdueDecidesByThePresent) {
    Seam::setNow(at("16:00:00"));
    engine->reconcile();
    Seam::sleepUntil(at("20:00:00"));
    EXPECT_FALSE(sleepGuard->isActive());
    EXPECT_EQ(Seam::scheduledTimers(), (std::vector{at("09:00:00", tomorrow), at("17:00:00", tomorrow)}));
    Seam::sleepUntil(at("12:00:00", tomorrow));
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(ScheduleEngineTest, AWindowThatWasSleptThroughAsksForNothing) {
    Seam::setNow(at("08:00:00"));
    engine->reconcile();
    Seam::sleepUntil(at("20:00:00"));
    EXPECT_EQ(Seam::power().creations, 0);
    EXPECT_EQ(Seam::scheduledTimers(), (std::vector{at("09:00:00", tomorrow), at("17:00:00", tomorrow)}));
}

TEST_F(ScheduleEngineTest, AnOverrideThatWasNeverTimedEndsAtOnce) {
    Seam::setNow(at("10:00:00"));
    engine->manualOverride = true;
    engine->reconcile();
    EXPECT_FALSE(engine->manualOverride);
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(ScheduleEngineTest, ABoundaryAtThePresentInstantHasPassed) {
    Seam::setNow(at("16:59:30"));
    engine->reconcile();
    toggleByHand();
    Seam::setNow(at("17:00:00"));
    Seam::announceClockChange();
    EXPECT_FALSE(engine->manualOverride);
}

TEST_F(ScheduleEngineTest, EitherOfTheTwoTimesEndsAnOverride) {
    Seam::setNow(at("08:00:00"));
    engine->reconcile();
    toggleByHand();
    Seam::setNow(at("09:30:00")); // the on time has passed, the off time has not
    Seam::announceWake();
    EXPECT_FALSE(engine->manualOverride);
}

TEST_F(ScheduleEngineTest, AClockSetBackwardsKeepsTheOverride) {
    Seam::setNow(at("18:00:00"));
    engine->reconcile();
    toggleByHand();
    Seam::setNow(at("10:00:00"));
    Seam::announceClockChange();
    EXPECT_TRUE(engine->manualOverride);
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(ScheduleEngineTest, ATimerThatFiresLateStillActsAndArmsTheNextDay) {
    Seam::setNow(at("08:00:00"));
    engine->reconcile();
    Seam::setNow(at("09:00:29"));
    Seam::runUntil(at("09:00:30"));
    EXPECT_TRUE(sleepGuard->isActive());
    EXPECT_EQ(Seam::scheduledTimers(), (std::vector{at("17:00:00"), at("09:00:00", tomorrow)}));
}

TEST_F(ScheduleEngineTest, AnotherTimeZoneDecidesAnewAndArmsAnew) {
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    ASSERT_TRUE(sleepGuard->isActive());
    Seam::setTimeZone("America/New_York"); // 04:00
    Seam::announceTimeZoneChange();
    EXPECT_FALSE(sleepGuard->isActive());
    EXPECT_EQ(Seam::scheduledTimers(), (std::vector{at("15:00:00"), at("23:00:00")}));
}

TEST_F(ScheduleEngineTest, AnotherClockDecidesAnew) {
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    Seam::setNow(at("20:00:00"));
    Seam::announceClockChange();
    EXPECT_FALSE(sleepGuard->isActive());
}

TEST_F(ScheduleEngineTest, TheSpringGapIsAnsweredByItsEnd) {
    schedule(150, 300); // 02:30 does not exist on 2024-03-31
    Seam::setNow(at("01:00:00", "2024-03-31"));
    engine->reconcile();
    EXPECT_EQ(Seam::scheduledTimers().front(), at("03:00:00", "2024-03-31"));
    Seam::runUntil(at("03:00:00", "2024-03-31"));
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(ScheduleEngineTest, TheAutumnRepetitionIsAnsweredByItsFirst) {
    schedule(150, 300); // 02:30 comes twice on 2024-10-27
    Seam::setNow(at("01:00:00", "2024-10-27"));
    engine->reconcile();
    EXPECT_EQ(Seam::scheduledTimers().front().timeIntervalSince1970(), 1729989000); // 00:30 UTC
}

TEST_F(ScheduleEngineTest, ValuesNobodyShouldStoreAreNotClampedAndHarmless) {
    struct Case {
        std::int64_t on, off;
        bool wanted;
        std::size_t timers;
    };
    constexpr auto huge = std::int64_t{100000};
    for (const auto& [on, off, wanted, timers] : {
             Case{-1, 1020, true, 1},     // before midnight: on since then, until 17:00
             Case{540, 1440, true, 1},    // 24:00 never comes
             Case{1440, 540, false, 1},   // 1440 <= now never holds, now < 540 neither
             Case{huge, 1020, true, 1},   // wraps: on until 17:00
             Case{540, huge, true, 1},    // never off again
             Case{-huge, huge, true, 0},  // always
             Case{huge, -huge, false, 0}, // never
             Case{-60, -120, true, 0},    // wraps: now >= -60
             Case{std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(), true, 0},
         }) {
        schedule(on, off);
        EXPECT_EQ(wantedAt("12:00:00"), wanted) << on << " " << off;
        EXPECT_EQ(Seam::scheduledTimers().size(), timers) << on << " " << off;
        Seam::runUntil(at("12:00:00", "2024-05-09"));
    }
}

TEST_F(ScheduleEngineTest, TheTimersMayFireAfterTheEngineIsGone) {
    Seam::setNow(at("08:00:00"));
    engine->reconcile();
    const std::weak_ptr<ScheduleEngine> weak = engine;
    engine = nullptr;
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(Seam::scheduledTimers().size(), 2U); // released, not invalidated
    Seam::runUntil(at("18:00:00"));
    Seam::announceWake();
    EXPECT_TRUE(changes.empty());
    EXPECT_TRUE(Seam::scheduledTimers().empty());
}

TEST_F(ScheduleEngineTest, ChangedTimesCountFromTheNextDecision) {
    Seam::setNow(at("10:00:00"));
    engine->reconcile();
    schedule(600, 660);
    engine->reconcile();
    EXPECT_EQ(Seam::scheduledTimers(), (std::vector{at("11:00:00"), at("10:00:00", tomorrow)}));
}

} // namespace
