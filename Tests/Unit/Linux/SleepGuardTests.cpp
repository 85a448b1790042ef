#include "SleepGuard.h"

#include "Seam/Power.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

struct SleepGuardAndPower : testing::Test {
    SleepGuardAndPower() {
        sleepGuard.onChange = [this](bool active) { changes.push_back(active); };
    }

    SleepGuard sleepGuard;
    std::vector<bool> changes;
};

TEST_F(SleepGuardAndPower, ActivatingTakesTheDisplaySleepAssertion) {
    sleepGuard.activate();
    EXPECT_TRUE(sleepGuard.isActive());
    ASSERT_EQ(Seam::power().held.size(), 1U);
    const auto& [id, assertion] = *Seam::power().held.begin();
    EXPECT_EQ(sleepGuard.assertionID(), id);
    EXPECT_EQ(assertion.type, "PreventUserIdleDisplaySleep");
    EXPECT_EQ(static_cast<unsigned>(assertion.level), 255U);
    EXPECT_EQ(assertion.name, "Vantorel is keeping your Mac awake");
    EXPECT_EQ(Seam::power().initialID, 0U);
}

TEST_F(SleepGuardAndPower, ActivatingTwiceTakesOneAssertionAndCallsBackOnce) {
    sleepGuard.activate();
    sleepGuard.activate();
    EXPECT_EQ(Seam::power().creations, 1);
    EXPECT_EQ(changes, std::vector{true});
}

TEST_F(SleepGuardAndPower, DeactivatingReleasesTheAssertion) {
    sleepGuard.activate();
    const auto id = sleepGuard.assertionID();
    sleepGuard.deactivate();
    EXPECT_FALSE(sleepGuard.isActive());
    EXPECT_EQ(sleepGuard.assertionID(), 0U);
    EXPECT_EQ(Seam::power().releases, std::vector{id});
    EXPECT_EQ(changes, (std::vector{true, false}));
}

TEST_F(SleepGuardAndPower, DeactivatingAnInactiveGuardDoesNothing) {
    sleepGuard.deactivate();
    EXPECT_EQ(Seam::power().creations, 0);
    EXPECT_TRUE(Seam::power().releases.empty());
    EXPECT_TRUE(changes.empty());
}

TEST_F(SleepGuardAndPower, ARefusedAssertionLeavesTheGuardInactiveWithoutAWord) {
    Seam::power().refuses = true;
    testing::internal::CaptureStderr();
    sleepGuard.toggle();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(sleepGuard.isActive());
    EXPECT_EQ(sleepGuard.assertionID(), 0U);
    EXPECT_TRUE(changes.empty());
    Seam::power().refuses = false;
    sleepGuard.toggle();
    EXPECT_TRUE(sleepGuard.isActive());
    EXPECT_EQ(Seam::power().creations, 2);
}

TEST(SleepGuard, DestroyingTheGuardKeepsTheAssertion) {
    {
        SleepGuard().activate();
    }
    EXPECT_EQ(Seam::power().held.size(), 1U);
    EXPECT_TRUE(Seam::power().releases.empty());
}

} // namespace
