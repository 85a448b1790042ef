#include "AppDelegate.h"

#include "LoginItem.h"
#include "Prefs.h"
#include "Updater.h"
#include "Weakly.h"

#include <utility>

void AppDelegate::applicationDidFinishLaunching(const NS::Notification&) {
    Prefs::registerDefaults();
    if (Prefs::d().stringForKey(Prefs::appLanguage) || Prefs::d().objectIsForcedForKey(Prefs::appLanguage)) {
        start();
    } else {
        welcome();
    }
}

void AppDelegate::welcome() {
    welcomeController_ = WelcomeWindowController::create([weak = weak_from_this()] {
        if (!Prefs::d().objectIsForcedForKey(Prefs::launchAtLogin)) {
            LoginItem::set(true); // unasked: an app that keeps the Mac awake is wanted after the next login too
        }
        if (const auto self = weak.lock()) {
            self->start();
            self->welcomeController_ = nullptr;
        }
    });
    welcomeController_->show();
}

void AppDelegate::start() {
    LoginItem::applyForced();
    auto scheduleEngine = ScheduleEngine::create(sleepGuard_);
    auto statusController = StatusItemController::create(sleepGuard_);
    auto settingsController = SettingsWindowController::create(scheduleEngine);
    statusController->onManualToggle = [weak = std::weak_ptr(scheduleEngine)] {
        const auto engine = weak.lock();
        if (engine && Prefs::d().boolForKey(Prefs::scheduleEnabled)) {
            engine->manualOverride = true;
            engine->overrideSetAt = NS::Date::date();
        }
    };
    statusController->onOpenSettings = weakly(std::weak_ptr(settingsController), &SettingsWindowController::show);
    scheduleEngine_ = std::move(scheduleEngine);
    statusController_ = std::move(statusController);
    settingsController_ = std::move(settingsController);
    scheduleEngine_->reconcile();
    *Updater::shouldPostpone = [weak = weak_from_this()] { // on a thread of the updater's
        const auto self = weak.lock();
        return self && self->sleepGuard_->isActive();
    };
    Updater::start();
}

// The way in where no bar shows the cup.
bool AppDelegate::applicationShouldHandleReopen(bool) {
    if (welcomeController_) {
        welcomeController_->show();
    } else if (settingsController_) {
        settingsController_->show();
    }
    return false;
}

void AppDelegate::applicationWillTerminate(const NS::Notification&) {
    sleepGuard_->deactivate();
}
