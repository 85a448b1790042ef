#include "AppDelegate.h"

#include "L10n.h"
#include "Platform/AppKit/StackView.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Linux/AppKit/ViewNative.h"
#include "Platform/Linux/AppKit/WindowNative.h"
#include "Platform/ServiceManagement/AppService.h"
#include "Prefs.h"
#include "Seam/Bar.h"
#include "Seam/Clock.h"
#include "Seam/Power.h"
#include "Unit/Linux/Managed.h"
#include "Updater.h"

#include <QAbstractButton>
#include <QByteArray>
#include <QCoreApplication>
#include <QEvent>
#include <QPushButton>
#include <algorithm>
#include <gtest/gtest.h>

namespace {

struct AppDelegateTest : testing::Test {
    void launch() { delegate->applicationDidFinishLaunching({"launched"}); }
    void terminate() { delegate->applicationWillTerminate({"terminating"}); }

    static std::vector<NS::Window> windows() { return NS::Application::sharedApplication().windows(); }
    static void pressContinue() {
        Linux::object<Linux::WindowNative>(windows().at(0)).widget->findChild<QPushButton*>()->click();
    }

    std::shared_ptr<AppDelegate> delegate = std::make_shared<AppDelegate>();
};

TEST_F(AppDelegateTest, AReturningUserGetsTheCupAndNoWindow) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    launch();
    EXPECT_EQ(Seam::statusItems().size(), 1U);
    EXPECT_TRUE(windows().empty());
}

TEST_F(AppDelegateTest, TheLanguagesPresenceCountsNotItsContent) {
    Prefs::d().setObject(NS::PropertyListValue(""), Prefs::appLanguage);
    launch();
    EXPECT_EQ(Seam::statusItems().size(), 1U);
    EXPECT_TRUE(windows().empty());
}

TEST_F(AppDelegateTest, LaunchingRegistersTheDefaultsFirst) {
    launch();
    EXPECT_TRUE(Prefs::d().boolForKey(Prefs::autoUpdate));
    EXPECT_EQ(Prefs::d().integerForKey(Prefs::scheduleOffMinutes), 1080);
}

TEST_F(AppDelegateTest, TheFirstRunShowsTheWelcomeWindowAndNothingElse) {
    launch();
    EXPECT_EQ(windows().size(), 1U);
    EXPECT_TRUE(Seam::statusItems().empty());
    EXPECT_EQ(NS::AppService::mainAppService().status(), NS::AppServiceStatus::NotRegistered);
}

TEST_F(AppDelegateTest, ContinuingEnablesTheLoginItemThenStartsAndLetsTheWindowGo) {
    launch();
    pressContinue();
    EXPECT_EQ(NS::AppService::mainAppService().status(), NS::AppServiceStatus::Enabled);
    EXPECT_EQ(Seam::statusItems().size(), 1U);
    EXPECT_TRUE(windows().empty());
    EXPECT_EQ(Prefs::d().stringForKey(Prefs::appLanguage), "en");
}

TEST_F(AppDelegateTest, ContinuingLetsTheControllerGo) {
    launch();
    const auto viewsOf = [](const NS::View& stack) {
        return Linux::handle<NS::StackView>(Linux::sharedObject<Linux::ViewNative>(stack)).arrangedSubviews();
    };
    const std::weak_ptr radio =
        Linux::sharedObject<Linux::ViewNative>(viewsOf(viewsOf(windows().at(0).contentView()).at(4)).at(0));
    ASSERT_FALSE(radio.expired());
    pressContinue();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(radio.expired());
}

TEST_F(AppDelegateTest, TheLoginItemComesBeforeTheStart) {
    launch();
    std::vector<NS::AppServiceStatus> atTheCup;
    Seam::whenStatusItemIsMade([&] { atTheCup.push_back(NS::AppService::mainAppService().status()); });
    pressContinue();
    EXPECT_EQ(atTheCup, std::vector{NS::AppServiceStatus::Enabled});
}

TEST_F(AppDelegateTest, TheLoginItemIsTurnedOnAlsoForADelegateThatIsGone) {
    launch();
    auto center = NS::NotificationCenter::defaultCenter();
    const auto observer =
        center.addObserverForName(L10n::languageDidChange(), [this](const auto&) { delegate = nullptr; });
    pressContinue();
    center.removeObserver(observer);
    EXPECT_EQ(NS::AppService::mainAppService().status(), NS::AppServiceStatus::Enabled);
    EXPECT_TRUE(Seam::statusItems().empty());
}

TEST_F(AppDelegateTest, ARefusedLoginItemDoesNotStopTheStart) {
    qputenv("XDG_CONFIG_HOME", "/dev/null");
    launch();
    testing::internal::CaptureStderr();
    pressContinue();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("LoginItem: register failed: "), std::string::npos);
    EXPECT_EQ(Seam::statusItems().size(), 1U);
}

TEST_F(AppDelegateTest, ASecondStartShowsTheWelcomeWindowWhileItWaits) {
    launch();
    windows().at(0).orderOut();
    EXPECT_FALSE(delegate->applicationShouldHandleReopen(false));
    ASSERT_EQ(windows().size(), 1U);
    EXPECT_TRUE(windows().at(0).isVisible());
    EXPECT_TRUE(Seam::statusItems().empty());
}

TEST_F(AppDelegateTest, ASecondStartShowsSettings) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    launch();
    EXPECT_FALSE(delegate->applicationShouldHandleReopen(false));
    ASSERT_EQ(windows().size(), 1U);
    EXPECT_EQ(windows().at(0).title(), "Vantorel Settings");
    EXPECT_TRUE(windows().at(0).isVisible());
}

TEST_F(AppDelegateTest, QuittingFromTheWelcomeWindowLeavesNoLanguage) {
    launch();
    terminate();
    EXPECT_EQ(Prefs::d().stringForKey(Prefs::appLanguage), std::nullopt);
}

TEST_F(AppDelegateTest, WhereTheLanguageIsForcedNobodyIsWelcomed) {
    for (const char* value : {"<string>pt-BR</string>", "<string>fr</string>", "<array/>"}) {
        force(std::string("<key>appLanguage</key>") + value);
        delegate = std::make_shared<AppDelegate>();
        launch();
        EXPECT_TRUE(windows().empty()) << value;
    }
    EXPECT_EQ(Seam::statusItems().size(), 1U);
    EXPECT_EQ(NS::AppService::mainAppService().status(), NS::AppServiceStatus::NotRegistered);
}

TEST_F(AppDelegateTest, AForcedLoginItemIsSetAtTheStartWithoutAWord) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    testing::internal::CaptureStderr();
    for (const bool wanted : {true, true, false, false}) {
        force(wanted ? "<key>launchAtLogin</key><true/>" : "<key>launchAtLogin</key><false/>");
        delegate = std::make_shared<AppDelegate>();
        launch();
        EXPECT_EQ(NS::AppService::mainAppService().status() == NS::AppServiceStatus::Enabled, wanted);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(windows().empty());
}

TEST_F(AppDelegateTest, WhatAUserTurnsOffElsewhereStaysOffUntilTheNextStart) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    force("<key>launchAtLogin</key><true/>");
    launch();
    NS::AppService::mainAppService().unregisterAndReturnError();
    QCoreApplication::processEvents();
    EXPECT_EQ(NS::AppService::mainAppService().status(), NS::AppServiceStatus::NotRegistered);
}

TEST_F(AppDelegateTest, ALoginItemThatIsNotForcedIsLeftAlone) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    Prefs::d().setBool(true, Prefs::launchAtLogin);
    launch();
    EXPECT_EQ(NS::AppService::mainAppService().status(), NS::AppServiceStatus::NotRegistered);
}

TEST_F(AppDelegateTest, TheFirstRunDoesNotTurnOnALoginItemThatIsForcedOff) {
    force("<key>launchAtLogin</key><false/>");
    launch();
    testing::internal::CaptureStderr();
    pressContinue();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(NS::AppService::mainAppService().status(), NS::AppServiceStatus::NotRegistered);
    EXPECT_EQ(Seam::statusItems().size(), 1U);
}

/// Noon in UTC, the zone of the tests.
NS::Date noon() {
    return NS::Date::dateWithTimeIntervalSince1970(1'714'996'800);
}

struct ScheduledAppDelegateTest : AppDelegateTest {
    ScheduledAppDelegateTest() {
        Seam::setNow(noon());
        Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
        Prefs::d().setBool(true, Prefs::scheduleEnabled);
    }
};

TEST_F(ScheduledAppDelegateTest, StartingBringsTheGuardIntoLineWithTheSchedule) {
    launch();
    EXPECT_EQ(Seam::power().held.size(), 1U);
    const auto timers = Seam::scheduledTimers();
    for (const double hours : {6, 21}) { // 18:00 and 09:00
        EXPECT_EQ(std::count(timers.begin(), timers.end(), noon().dateByAddingTimeInterval(hours * 3600)), 1);
    }
}

TEST_F(ScheduledAppDelegateTest, StartingStartsTheUpdater) {
    Prefs::d().setBool(false, Prefs::scheduleEnabled);
    launch();
    EXPECT_EQ(Seam::scheduledTimers(),
              (std::vector{noon().dateByAddingTimeInterval(12), noon().dateByAddingTimeInterval(24 * 3600.0)}));
}

TEST_F(ScheduledAppDelegateTest, TheCupComesFirstThenTheScheduleThenTheUpdater) {
    std::vector<std::string> order;
    const auto isHookSet = [] { return bool(*Updater::shouldPostpone); };
    Seam::whenStatusItemIsMade([&] { order.emplace_back("cup"); });
    Seam::power().whenAsked = [&] { order.emplace_back(isHookSet() ? "decision after the hook" : "decision"); };
    Seam::whenTimerIsScheduled([&] { order.emplace_back(isHookSet() ? "timer after the hook" : "timer"); });
    launch();
    EXPECT_EQ(order, (std::vector<std::string>{"cup", "decision", "timer", "timer", "timer after the hook",
                                               "timer after the hook"}));
    Seam::power().whenAsked = nullptr;
}

TEST_F(ScheduledAppDelegateTest, AClickOverridesTheScheduleUntilItsNextTime) {
    launch();
    Seam::click(Seam::statusItems().front(), {NS::EventType::LeftMouseUp});
    EXPECT_TRUE(Seam::power().held.empty());
    Seam::runUntil(noon().dateByAddingTimeInterval(3600));
    Seam::announceWake();
    EXPECT_TRUE(Seam::power().held.empty()); // the override was set with the time of the click
    Seam::runUntil(noon().dateByAddingTimeInterval(21 * 3600));
    EXPECT_EQ(Seam::power().held.size(), 1U); // 09:00 came
}

TEST_F(ScheduledAppDelegateTest, AClickWhileTheScheduleIsOffOverridesNothing) {
    Prefs::d().setBool(false, Prefs::scheduleEnabled);
    launch();
    Seam::click(Seam::statusItems().front(), {NS::EventType::LeftMouseUp});
    Seam::click(Seam::statusItems().front(), {NS::EventType::LeftMouseUp});
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    Seam::announceWake(); // no override stands in the way of the window
    EXPECT_EQ(Seam::power().held.size(), 1U);
}

TEST_F(AppDelegateTest, TheMenusSettingsLineOpensTheOneSettingsWindow) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    launch();
    for (int time = 0; time < 2; ++time) {
        Seam::whenMenuOpens([](NS::StatusItem item) { item.menu().performActionForItemAtIndex(3); });
        Seam::click(Seam::statusItems().front(), {NS::EventType::RightMouseUp});
        ASSERT_EQ(windows().size(), 1U);
        EXPECT_EQ(windows().front().title(), "Vantorel Settings");
        EXPECT_TRUE(windows().front().isVisible());
        windows().front().orderOut();
    }
}

TEST_F(AppDelegateTest, UpdatesArePostponedExactlyWhileTheGuardIsActive) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    launch();
    EXPECT_FALSE((*Updater::shouldPostpone)());
    Seam::click(Seam::statusItems().front(), {NS::EventType::LeftMouseUp});
    EXPECT_TRUE((*Updater::shouldPostpone)());
    Seam::click(Seam::statusItems().front(), {NS::EventType::LeftMouseUp});
    EXPECT_FALSE((*Updater::shouldPostpone)());
    Seam::click(Seam::statusItems().front(), {NS::EventType::LeftMouseUp});
    delegate = nullptr;
    EXPECT_FALSE((*Updater::shouldPostpone)());
}

TEST_F(AppDelegateTest, QuittingWhileActiveReleasesTheAssertionAndShowsIt) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    launch();
    const auto item = Seam::statusItems().front();
    Seam::click(item, {NS::EventType::LeftMouseUp});
    ASSERT_EQ(Seam::power().held.size(), 1U);
    const int before = Seam::imageChanges(item);
    terminate();
    EXPECT_TRUE(Seam::power().held.empty());
    EXPECT_EQ(Seam::imageChanges(item), before + 1);
}

TEST_F(AppDelegateTest, QuittingWhileInactiveCallsNothing) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    launch();
    const int before = Seam::imageChanges(Seam::statusItems().front());
    terminate();
    EXPECT_TRUE(Seam::power().releases.empty());
    EXPECT_EQ(Seam::imageChanges(Seam::statusItems().front()), before);
}

} // namespace
