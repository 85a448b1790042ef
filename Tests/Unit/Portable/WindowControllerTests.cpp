#include "L10n.h"
#include "Platform/AppKit/Application.h"
#include "Prefs.h"
#include "ScheduleEngine.h"
#include "SettingsWindowController.h"
#include "WelcomeWindowController.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace {

/// The windows' controllers on each system's own windows. What stands in them is looked at where a test can reach into
/// them, which is on Linux.
struct WindowControllers : testing::Test {
    WindowControllers() { clear(); }
    ~WindowControllers() override { clear(); }

    static void clear() {
        for (const char* key : {Prefs::appLanguage, Prefs::autoUpdate, Prefs::scheduleEnabled, Prefs::scheduleOnMinutes,
                                Prefs::scheduleOffMinutes}) {
            Prefs::d().setObject(std::nullopt, key);
        }
    }

    static std::vector<NS::Window> shownWindows(const std::string& title) {
        auto windows = NS::Application::sharedApplication().windows();
        std::erase_if(windows, [&](const NS::Window& window) {
            return !window.isVisible() || window.title() != title ||
                   !contains(window.styleMask(), NS::WindowStyleMask::Titled);
        });
        return windows;
    }

    int completions = 0;
    std::shared_ptr<WelcomeWindowController> welcome = WelcomeWindowController::create([this] { ++completions; });
    std::shared_ptr<SleepGuard> sleepGuard = std::make_shared<SleepGuard>();
    std::shared_ptr<SettingsWindowController> settings =
        SettingsWindowController::create(ScheduleEngine::create(sleepGuard));
};

TEST_F(WindowControllers, WelcomeIsAWindowThatIsTitledAndNothingElse) {
    EXPECT_TRUE(shownWindows("").empty());
    welcome->show();
    const auto windows = shownWindows("");
    ASSERT_EQ(windows.size(), 1U);
    EXPECT_EQ(windows[0].styleMask(), NS::WindowStyleMask::Titled);
    EXPECT_EQ(windows[0].titleVisibility(), NS::WindowTitleVisibility::Hidden);
    EXPECT_EQ(Prefs::d().stringForKey(Prefs::appLanguage), std::nullopt);
    EXPECT_EQ(completions, 0);
}

TEST_F(WindowControllers, ContinuingStoresTheSystemsLanguageAndTakesTheWindowAway) {
    welcome->show();
    welcome->continuePressed();
    EXPECT_EQ(Prefs::d().stringForKey(Prefs::appLanguage), L10n::rawValue(L10n::detectSystemLanguage()));
    EXPECT_EQ(completions, 1);
    EXPECT_TRUE(shownWindows("").empty());
}

TEST_F(WindowControllers, SettingsIsOneWindowHoweverOftenItIsShown) {
    L10n::setCurrent(Language::en);
    EXPECT_TRUE(shownWindows("Vantorel Settings").empty());
    settings->show();
    const auto windows = shownWindows("Vantorel Settings");
    ASSERT_EQ(windows.size(), 1U);
    EXPECT_EQ(windows[0].styleMask(), NS::WindowStyleMask::Titled | NS::WindowStyleMask::Closable);
    settings->show();
    EXPECT_EQ(shownWindows("Vantorel Settings"), windows);
}

TEST_F(WindowControllers, SettingsIsTitledAnewInAnotherLanguage) {
    L10n::setCurrent(Language::en);
    settings->show();
    L10n::setCurrent(Language::ptBR);
    EXPECT_TRUE(shownWindows("Vantorel Settings").empty());
    EXPECT_EQ(shownWindows("Ajustes do Vantorel").size(), 1U);
}

TEST_F(WindowControllers, TheControlsOfSettingsKeepWhatIsStored) {
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    Prefs::d().setInteger(61, Prefs::scheduleOnMinutes);
    Prefs::d().setInteger(1439, Prefs::scheduleOffMinutes);
    settings->show();
    clear(); // what is stored again can only come from the controls
    settings->timesChanged();
    settings->scheduleChanged();
    EXPECT_EQ(Prefs::d().integerForKey(Prefs::scheduleOnMinutes), 61);
    EXPECT_EQ(Prefs::d().integerForKey(Prefs::scheduleOffMinutes), 1439);
    EXPECT_TRUE(Prefs::d().boolForKey(Prefs::scheduleEnabled));
    sleepGuard->deactivate(); // whatever the hour
}

} // namespace
