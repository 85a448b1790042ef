#pragma once

#include "Platform/AppKit/Application.h"
#include "ScheduleEngine.h"
#include "SettingsWindowController.h"
#include "SleepGuard.h"
#include "StatusItemController.h"
#include "WelcomeWindowController.h"

#include <memory>

/// Owns every long-lived object: decides at launch whether the user is welcomed first, brings the system up in order
/// and lets the machine sleep again at the end. Main thread only.
class AppDelegate : public NS::ApplicationDelegate, public std::enable_shared_from_this<AppDelegate> {
public:
    void applicationDidFinishLaunching(const NS::Notification& notification) override;
    void applicationWillTerminate(const NS::Notification& notification) override;
    bool applicationShouldHandleReopen(bool hasVisibleWindows) override;

private:
    void welcome();
    void start();

    std::shared_ptr<SleepGuard> sleepGuard_ = std::make_shared<SleepGuard>();
    std::shared_ptr<StatusItemController> statusController_;
    std::shared_ptr<ScheduleEngine> scheduleEngine_;
    std::shared_ptr<SettingsWindowController> settingsController_;
    std::shared_ptr<WelcomeWindowController> welcomeController_; // only while its window is pending
};
