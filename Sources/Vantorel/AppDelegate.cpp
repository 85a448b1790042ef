#include "AppDelegate.h"

#include "LoginItem.h"
#include "Prefs.h"

void AppDelegate::applicationDidFinishLaunching(const NS::Notification&) {
    Prefs::registerDefaults();
    if (Prefs::d().stringForKey(Prefs::appLanguage)) {
        start();
    } else {
        welcome();
    }
}

void AppDelegate::welcome() {
    welcomeController_ = WelcomeWindowController::create([weak = weak_from_this()] {
        LoginItem::set(true); // unasked: an app that keeps the Mac awake is wanted after the next login too
        if (const auto self = weak.lock()) {
            self->start();
            self->welcomeController_ = nullptr;
        }
    });
    welcomeController_->show();
}

void AppDelegate::start() {
    statusController_ = StatusItemController::create(sleepGuard_);
}

void AppDelegate::applicationWillTerminate(const NS::Notification&) {
    sleepGuard_->deactivate();
}
