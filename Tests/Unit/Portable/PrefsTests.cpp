#include "Prefs.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

class PrefsTest : public testing::Test {
protected:
    PrefsTest() { clear(); }
    ~PrefsTest() override { clear(); }

    static void clear() {
        for (const char* key : {Prefs::appLanguage, Prefs::launchAtLogin, Prefs::autoUpdate, Prefs::scheduleEnabled,
                                Prefs::scheduleOnMinutes, Prefs::scheduleOffMinutes, Prefs::updateAttemptsByVersion}) {
            Prefs::d().setObject(std::nullopt, key);
        }
    }

    static void storeAttempts(const NS::PropertyListValue& value) {
        Prefs::d().setObject(value, Prefs::updateAttemptsByVersion);
    }
};

TEST_F(PrefsTest, KeysHaveTheirNames) {
    EXPECT_STREQ(Prefs::appLanguage, "appLanguage");
    EXPECT_STREQ(Prefs::launchAtLogin, "launchAtLogin");
    EXPECT_STREQ(Prefs::autoUpdate, "autoUpdate");
    EXPECT_STREQ(Prefs::scheduleEnabled, "scheduleEnabled");
    EXPECT_STREQ(Prefs::scheduleOnMinutes, "scheduleOnMinutes");
    EXPECT_STREQ(Prefs::scheduleOffMinutes, "scheduleOffMinutes");
    EXPECT_STREQ(Prefs::updateAttemptsByVersion, "updateAttempts");
}

TEST_F(PrefsTest, FreshAccountReadsTheRegisteredDefaults) {
    Prefs::registerDefaults();
    EXPECT_TRUE(Prefs::d().boolForKey("autoUpdate"));
    EXPECT_TRUE(Prefs::d().boolForKey("launchAtLogin"));
    EXPECT_FALSE(Prefs::d().boolForKey("scheduleEnabled"));
    EXPECT_EQ(Prefs::d().integerForKey("scheduleOnMinutes"), 540);
    EXPECT_EQ(Prefs::d().integerForKey("scheduleOffMinutes"), 1080);
    EXPECT_EQ(Prefs::d().stringForKey("appLanguage"), std::nullopt);
    EXPECT_EQ(Prefs::d().dictionaryForKey("updateAttempts"), std::nullopt);
}

TEST_F(PrefsTest, MissingKeysWithoutARegisteredDefaultReadAsNothing) {
    EXPECT_FALSE(Prefs::d().boolForKey("no.such.key"));
    EXPECT_EQ(Prefs::d().integerForKey("no.such.key"), 0);
    EXPECT_EQ(Prefs::d().stringForKey("no.such.key"), std::nullopt);
    EXPECT_EQ(Prefs::d().dictionaryForKey("no.such.key"), std::nullopt);
}

TEST_F(PrefsTest, RegisteredDefaultsNeverOverrideWhatIsStored) {
    Prefs::d().setBool(false, Prefs::autoUpdate);
    Prefs::d().setInteger(7, Prefs::scheduleOnMinutes);
    Prefs::registerDefaults();
    EXPECT_FALSE(Prefs::d().boolForKey(Prefs::autoUpdate));
    EXPECT_EQ(Prefs::d().integerForKey(Prefs::scheduleOnMinutes), 7);
}

TEST_F(PrefsTest, AttemptsAreCountedForOneVersionOnly) {
    EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 0);
    Prefs::noteUpdateAttempt("1.2.0");
    Prefs::noteUpdateAttempt("1.2.0");
    EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 2);
    EXPECT_EQ(Prefs::updateAttempts("1.3.0"), 0);
    Prefs::noteUpdateAttempt("1.3.0");
    EXPECT_EQ(Prefs::updateAttempts("1.3.0"), 1);
    EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 0);
    EXPECT_EQ(Prefs::d().dictionaryForKey("updateAttempts"), (NS::Dictionary{{"1.3.0", 1}}));
}

TEST_F(PrefsTest, AMalformedCountForAnotherVersionStartsAgainFromOne) {
    storeAttempts(NS::Dictionary{{"1.1.0", "many"}, {"1.2.0", 2}});
    Prefs::noteUpdateAttempt("1.2.0");
    EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 1);
}

TEST_F(PrefsTest, AMalformedCountReadsAsNone) {
    storeAttempts(NS::Dictionary{{"1.2.0", "2"}});
    EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 0);
    for (const auto& count : {NS::PropertyListValue(2.5), NS::PropertyListValue(true), NS::PropertyListValue(0x1p63)}) {
        storeAttempts(NS::Dictionary{{"1.2.0", count}});
        EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 0);
        storeAttempts(NS::Dictionary{{"1.1.0", count}, {"1.2.0", 2}});
        Prefs::noteUpdateAttempt("1.2.0");
        EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 1);
    }
}

TEST_F(PrefsTest, ACountBesideAMalformedOneStillReads) {
    storeAttempts(NS::Dictionary{{"1.1.0", "many"}, {"1.2.0", 2}});
    EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 2);
}

TEST_F(PrefsTest, AttemptsThatAreNoDictionaryReadAsNoneAndStartFromOne) {
    storeAttempts("three");
    EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 0);
    Prefs::noteUpdateAttempt("1.2.0");
    EXPECT_EQ(Prefs::updateAttempts("1.2.0"), 1);
}

TEST_F(PrefsTest, WhatWasStoredIsThereAfterSynchronizing) {
    Prefs::d().setInteger(7, Prefs::scheduleOnMinutes);
    EXPECT_TRUE(Prefs::d().synchronize());
    EXPECT_EQ(Prefs::d().integerForKey(Prefs::scheduleOnMinutes), 7);
}

// A program of its own: on a Mac a forked one may not use the frameworks.
struct PrefsDeathTest : PrefsTest {
    PrefsDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(PrefsDeathTest, ACountThatOverflowsIsFatal) {
    storeAttempts(NS::Dictionary{{"1.2.0", std::numeric_limits<std::int64_t>::max()}});
    EXPECT_DEATH(Prefs::noteUpdateAttempt("1.2.0"), "overflows");
}

} // namespace
