#include "Platform/Foundation/Timer.h"

#include "Platform/Foundation/RunLoop.h"
#include "Seam/Clock.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

NS::Date in(double seconds) {
    return NS::Date::dateWithTimeIntervalSince1970(1'700'000'000 + seconds);
}

struct TimerTest : testing::Test {
    TimerTest() { Seam::setNow(in(0)); }

    NS::Timer scheduled(double seconds, double interval, bool repeats) {
        auto timer = NS::Timer::initWithFireDate(in(seconds), interval, repeats, [this] { ++fired; });
        NS::RunLoop::mainRunLoop().addTimer(timer, NS::RunLoopMode::Common);
        return timer;
    }

    int fired = 0;
};

TEST_F(TimerTest, FiresOnceAtItsTimeAndIsInvalidThen) {
    const auto timer = scheduled(10, 0, false);
    Seam::runUntil(in(9.9));
    EXPECT_EQ(fired, 0);
    EXPECT_TRUE(timer.isValid());
    Seam::runUntil(in(10));
    EXPECT_EQ(fired, 1);
    EXPECT_FALSE(timer.isValid());
    Seam::runUntil(in(100));
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerTest, RepeatsEachInterval) {
    const auto timer = scheduled(10, 5, true);
    Seam::runUntil(in(19.9));
    EXPECT_EQ(fired, 2);
    Seam::runUntil(in(20));
    EXPECT_EQ(fired, 3);
    EXPECT_TRUE(timer.isValid());
    EXPECT_EQ(timer.fireDate(), in(25));
}

TEST_F(TimerTest, WhatWasSleptThroughIsNotMadeUpFor) {
    const auto timer = scheduled(10, 5, true);
    Seam::sleepUntil(in(31));
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(timer.fireDate(), in(35));
}

TEST_F(TimerTest, AClockThatIsSetNeitherPutsOffNorHastensAnInterval) {
    const auto timer = scheduled(10, 10, true);
    const NS::Date lastYear = in(-365.0 * 86400);
    Seam::setNow(lastYear);
    Seam::runUntil(lastYear.dateByAddingTimeInterval(9.9));
    EXPECT_EQ(fired, 0);
    Seam::runUntil(lastYear.dateByAddingTimeInterval(10));
    EXPECT_EQ(fired, 1);
    Seam::setNow(in(0));
    Seam::runUntil(in(9.9));
    EXPECT_EQ(fired, 1);
    Seam::runUntil(in(10));
    EXPECT_EQ(fired, 2);
}

TEST_F(TimerTest, DoesNothingBeforeItIsAdded) {
    const auto timer = NS::Timer::initWithFireDate(in(1), 0, false, [this] { ++fired; });
    Seam::runUntil(in(2));
    EXPECT_EQ(fired, 0);
    EXPECT_TRUE(timer.isValid());
}

TEST_F(TimerTest, AddingItTwiceFiresItOnce) {
    const auto timer = scheduled(1, 0, false);
    NS::RunLoop::mainRunLoop().addTimer(timer, NS::RunLoopMode::Common);
    Seam::runUntil(in(2));
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerTest, AnInvalidatedTimerNeverFiresAndLetsGoOfItsBlock) {
    auto kept = std::make_shared<int>();
    auto timer = NS::Timer::initWithFireDate(in(1), 0, false, [kept] { ++*kept; });
    NS::RunLoop::mainRunLoop().addTimer(timer, NS::RunLoopMode::Common);
    timer.invalidate();
    timer.invalidate();
    EXPECT_EQ(kept.use_count(), 1);
    NS::RunLoop::mainRunLoop().addTimer(timer, NS::RunLoopMode::Common);
    Seam::runUntil(in(2));
    EXPECT_EQ(*kept, 0);
    EXPECT_TRUE(Seam::scheduledTimers().empty());
}

TEST_F(TimerTest, MayBeInvalidatedByItsOwnBlock) {
    NS::Timer timer;
    timer = NS::Timer::initWithFireDate(in(1), 1, true, [this, &timer] {
        ++fired;
        timer.invalidate();
    });
    NS::RunLoop::mainRunLoop().addTimer(timer, NS::RunLoopMode::Common);
    Seam::runUntil(in(5));
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerTest, TheRunLoopKeepsItWithoutAHandle) {
    scheduled(1, 0, false);
    Seam::runUntil(in(1));
    EXPECT_EQ(fired, 1);
}

} // namespace
