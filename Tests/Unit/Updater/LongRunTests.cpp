#include "UpdaterTest.h"

#include "AppDelegate.h"
#include "L10n.h"
#include "Platform/Linux/AppKit/WindowNative.h"
#include "Platform/Linux/Dispatch/Workers.h"
#include "Platform/ServiceManagement/AppService.h"
#include "Seam/Bar.h"
#include "Seam/Clock.h"
#include "Seam/Power.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>
#include <malloc.h>
#include <memory>

namespace {

constexpr double minute = 60;
constexpr double hour = 3600;
constexpr double day = 86400;

/// The whole application in its bundle, on from nine to six, for days.
struct LongRunTest : UpdaterTest {
    struct Resources {
        long threads;
        long descriptors;
        std::size_t memory; // in use; a sanitizer's allocator says 0, and looks for leaks by itself
    };

    void SetUp() override {
        UpdaterTest::SetUp();
        Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
        Prefs::d().setBool(true, Prefs::scheduleEnabled);
        Seam::setNow(firstDay.dateByAddingTimeInterval(18 * hour - minute / 2));
        delegate->applicationDidFinishLaunching({"launched"});
    }

    /// Lets time pass until an hour of a day, and what it started come to an end.
    void runUntil(int dayNumber, double time) {
        Seam::runUntil(firstDay.dateByAddingTimeInterval(dayNumber * day + time));
        settle();
    }

    static void settle() {
        for (int round = 0; round < 5; ++round) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            ASSERT_TRUE(Linux::waitForWorkers(30s));
        }
    }

    static bool isAwake() { return !Seam::power().held.empty(); }

    static void clickCup() {
        Seam::click(Seam::statusItems().at(0), {NS::EventType::LeftMouseUp});
        settle();
    }

    static QWidget* openSettings() {
        Seam::whenMenuOpens([](NS::StatusItem item) { item.menu().performActionForItemAtIndex(3); });
        Seam::click(Seam::statusItems().at(0), {NS::EventType::RightMouseUp});
        settle();
        auto window = NS::Application::sharedApplication().windows().at(0);
        EXPECT_TRUE(window.isVisible());
        return Linux::object<Linux::WindowNative>(window).widget;
    }

    /// What a person does with the Settings window in the evening.
    static void useSettings() {
        auto* settings = openSettings();
        auto* language = settings->findChild<QComboBox*>();
        for (const int choice : {0, 1}) {
            language->setCurrentIndex(choice);
            Q_EMIT language->activated(choice);
            EXPECT_EQ(L10n::current(), choice == 0 ? Language::ptBR : Language::en);
        }
        auto* login = settings->findChildren<QCheckBox*>().at(0);
        for (const auto expected : {NS::AppServiceStatus::Enabled, NS::AppServiceStatus::NotRegistered}) {
            login->click();
            EXPECT_EQ(NS::AppService::mainAppService().status(), expected);
        }
        settings->close();
        settle();
    }

    /// From half a minute before six, when the cup is on, to the same time of the next day. An update is offered, and
    /// put off, when the day's check comes.
    void liveThroughDay(int number) {
        const auto asked = paths().size();
        runUntil(number, 18 * hour - 1);
        EXPECT_TRUE(isAwake());
        EXPECT_EQ(paths().size(), asked + 1);
        EXPECT_EQ(paths().back(), manifestPath);
        runUntil(number, 18 * hour);
        EXPECT_FALSE(isAwake());
        useSettings();
        runUntil(number, 20 * hour);
        clickCup();
        EXPECT_TRUE(isAwake());
        Seam::announceWake();
        clickCup();
        EXPECT_FALSE(isAwake());
        runUntil(number + 1, 9 * hour);
        EXPECT_TRUE(isAwake());
        runUntil(number + 1, 18 * hour - minute);
    }

    static Resources resources() {
        const auto count = [](const char* folder) { return std::distance(fs::directory_iterator(folder), {}); };
        return {count("/proc/self/task"), count("/proc/self/fd"), mallinfo2().uordblks};
    }

    const NS::Date firstDay = NS::Date::dateWithTimeIntervalSince1970(19'800 * day);
    std::shared_ptr<AppDelegate> delegate = std::make_shared<AppDelegate>();
};

TEST_F(LongRunTest, ADayLeavesNothingBehindAndTheUpdateComesOnceTheCupIsOff) {
    liveThroughDay(0); // what is made on first use is made now
    const auto before = resources();
    liveThroughDay(1);
    const auto after = resources();
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_LE(after.memory, before.memory + 32 * 1024);

    EXPECT_EQ(toolsRun(), Names());
    clickCup(); // off, a minute before the day's check
    runUntil(2, 18 * hour - 1);
    EXPECT_EQ(toolsRun(), (Names{"hdiutil attach", "ditto", "hdiutil detach", "sh"}));
    EXPECT_EQ(Prefs::updateAttempts("1.1.0"), 1);
}

} // namespace
