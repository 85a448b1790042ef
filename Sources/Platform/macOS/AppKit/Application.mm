#include "Platform/AppKit/Application.h"

#include "Platform/NoDestructor.h"
#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

#include <objc/runtime.h>

@interface PlatformApplicationDelegate : NSObject <NSApplicationDelegate>
- (instancetype)initWithDelegate:(std::weak_ptr<NS::ApplicationDelegate>)delegate;
@end

@implementation PlatformApplicationDelegate {
    std::weak_ptr<NS::ApplicationDelegate> _delegate;
}

- (instancetype)initWithDelegate:(std::weak_ptr<NS::ApplicationDelegate>)delegate {
    if ((self = [super init])) {
        _delegate = std::move(delegate);
    }
    return self;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    if (const auto delegate = _delegate.lock()) {
        macOS::enter([&] { delegate->applicationDidFinishLaunching(macOS::toNotification(notification)); });
    }
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)__unused sender hasVisibleWindows:(BOOL)hasVisibleWindows {
    BOOL isLeftToAppKit = YES;
    if (const auto delegate = _delegate.lock()) {
        macOS::enter([&] { isLeftToAppKit = delegate->applicationShouldHandleReopen(hasVisibleWindows); });
    }
    return isLeftToAppKit;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    if (const auto delegate = _delegate.lock()) {
        macOS::enter([&] { delegate->applicationWillTerminate(macOS::toNotification(notification)); });
    }
}

@end

namespace NS {

using namespace macOS;

static_assert(static_cast<long>(ApplicationActivationPolicy::Regular) == NSApplicationActivationPolicyRegular);
static_assert(static_cast<long>(ApplicationActivationPolicy::Accessory) == NSApplicationActivationPolicyAccessory);
static_assert(static_cast<long>(ApplicationActivationPolicy::Prohibited) == NSApplicationActivationPolicyProhibited);

Application& Application::sharedApplication() {
    static NoDestructor<Application> application(handle<Application>([NSApplication sharedApplication]));
    return *application;
}

bool Application::setActivationPolicy(ApplicationActivationPolicy policy) {
    return [object<NSApplication>(*this) setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
}

ApplicationActivationPolicy Application::activationPolicy() const {
    return static_cast<ApplicationActivationPolicy>([object<NSApplication>(*this) activationPolicy]);
}

void Application::setDelegate(const std::shared_ptr<ApplicationDelegate>& delegate) {
    static const char key = 0;
    NSApplication* application = object<NSApplication>(*this);
    PlatformApplicationDelegate* trampoline = [[PlatformApplicationDelegate alloc] initWithDelegate:delegate];
    [application setDelegate:trampoline];
    // The application does not keep its delegate.
    objc_setAssociatedObject(application, &key, trampoline, OBJC_ASSOCIATION_RETAIN_NONATOMIC);
}

void Application::run() {
    [object<NSApplication>(*this) run];
}

void Application::terminate() {
    [object<NSApplication>(*this) terminate:nil];
}

std::optional<Event> Application::currentEvent() const {
    NSEvent* event = [object<NSApplication>(*this) currentEvent];
    if (event == nil) {
        return std::nullopt;
    }
    return Event{static_cast<EventType>([event type]), static_cast<EventModifierFlags>([event modifierFlags])};
}

std::vector<Window> Application::windows() const {
    return toHandles<Window>([object<NSApplication>(*this) windows]);
}

void Application::activateIgnoringOtherApps(bool ignoring) {
    [object<NSApplication>(*this) activateIgnoringOtherApps:ignoring];
}

} // namespace NS
