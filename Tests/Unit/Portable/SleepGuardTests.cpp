#include "SleepGuard.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

/// On a Mac with its own power service, which grants what it is asked for.
struct SleepGuardTest : testing::Test {
    SleepGuardTest() {
        sleepGuard.onChange = [this](bool active) {
            changes.push_back(active);
            seenInside.push_back(sleepGuard.isActive());
            EXPECT_EQ(sleepGuard.assertionID() != 0, active);
        };
    }

    ~SleepGuardTest() override { sleepGuard.deactivate(); }

    SleepGuard sleepGuard;
    std::vector<bool> changes;
    std::vector<bool> seenInside;
};

TEST_F(SleepGuardTest, StartsInactive) {
    EXPECT_FALSE(sleepGuard.isActive());
    EXPECT_EQ(sleepGuard.assertionID(), 0U);
}

TEST_F(SleepGuardTest, TogglingSwitchesBackAndForth) {
    sleepGuard.toggle();
    EXPECT_TRUE(sleepGuard.isActive());
    EXPECT_NE(sleepGuard.assertionID(), 0U);
    sleepGuard.toggle();
    EXPECT_FALSE(sleepGuard.isActive());
    EXPECT_EQ(sleepGuard.assertionID(), 0U);
    EXPECT_EQ(changes, (std::vector{true, false}));
}

TEST_F(SleepGuardTest, TheCallbackSeesTheNewState) {
    sleepGuard.toggle();
    sleepGuard.toggle();
    EXPECT_EQ(seenInside, (std::vector{true, false}));
}

TEST_F(SleepGuardTest, StateChangesWithoutACallbackToo) {
    sleepGuard.onChange = nullptr;
    sleepGuard.toggle();
    EXPECT_TRUE(sleepGuard.isActive());
    sleepGuard.toggle();
    EXPECT_FALSE(sleepGuard.isActive());
}

TEST_F(SleepGuardTest, ACallbackMayReplaceItself) {
    sleepGuard.onChange = [this](bool) { sleepGuard.onChange = [this](bool active) { changes.push_back(active); }; };
    sleepGuard.activate();
    EXPECT_TRUE(changes.empty());
    sleepGuard.deactivate();
    EXPECT_EQ(changes, std::vector{false});
}

} // namespace
