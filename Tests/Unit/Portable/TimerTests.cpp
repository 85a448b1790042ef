#include "Platform/Foundation/Timer.h"

#include <gtest/gtest.h>

namespace {

TEST(Timer, IsWhatItWasMadeUntilItIsInvalidated) {
    const auto date = NS::Date::dateWithTimeIntervalSince1970(4'000'000'000);
    auto timer = NS::Timer::initWithFireDate(date, 60, /*repeats=*/true, [] {});
    timer.setTolerance(30);
    EXPECT_EQ(timer.fireDate(), date);
    EXPECT_EQ(timer.timeInterval(), 60);
    EXPECT_EQ(timer.tolerance(), 30);
    EXPECT_TRUE(timer.isValid());
    timer.invalidate();
    EXPECT_FALSE(timer.isValid());
}

TEST(Timer, ThatDoesNotRepeatHasNoInterval) {
    const auto timer = NS::Timer::initWithFireDate(NS::Date::date(), 60, /*repeats=*/false, [] {});
    EXPECT_EQ(timer.timeInterval(), 0);
}

} // namespace
