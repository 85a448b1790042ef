#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/macOS/Conversions.h"

#include <dispatch/dispatch.h>
#include <memory>
#include <mutex>
#include <utility>

namespace macOS {

namespace {

/// What an observer runs until it is removed. From any thread.
class Registration {
public:
    using Block = std::function<void(const Notification&)>;

    explicit Registration(Block block) : block_(std::make_shared<const Block>(std::move(block))) {}

    void run(NSNotification* notification) {
        if (const auto block = current()) {
            (*block)(toNotification(notification));
        }
    }

    void end() {
        std::shared_ptr<const Block> last; // destroyed after the lock is given back: that may run anything
        const std::lock_guard guard(mutex_);
        last.swap(block_);
    }

private:
    std::shared_ptr<const Block> current() {
        const std::lock_guard guard(mutex_);
        return block_;
    }

    std::mutex mutex_;
    std::shared_ptr<const Block> block_; // guarded by the mutex; null once the observer is removed
};

// The system posts these two on a thread of its choice.
bool belongsOnMainThread(NSNotificationName name) {
    return [name isEqualToString:NSSystemClockDidChangeNotification] ||
           [name isEqualToString:NSSystemTimeZoneDidChangeNotification];
}

void deliver(NSNotification* notification, const std::shared_ptr<Registration>& registration) {
    if ([NSThread isMainThread] || !belongsOnMainThread([notification name])) {
        registration->run(notification);
        return;
    }
    const std::shared_ptr<Registration> kept = registration; // in the block by value
    dispatch_async(dispatch_get_main_queue(), ^{
        enter([&] { kept->run(notification); });
    });
}

} // namespace

} // namespace macOS

/// What stands behind an Observer.
@interface PlatformObserver : NSObject
- (instancetype)initWithToken:(id)token registration:(std::shared_ptr<macOS::Registration>)registration;
- (id)token;
- (void)endRegistration;
@end

@implementation PlatformObserver {
    id _token; // the center's own
    std::shared_ptr<macOS::Registration> _registration;
}

- (instancetype)initWithToken:(id)token registration:(std::shared_ptr<macOS::Registration>)registration {
    if ((self = [super init])) {
        _token = token;
        _registration = std::move(registration);
    }
    return self;
}

- (id)token {
    return _token;
}

- (void)endRegistration {
    _registration->end();
}

@end

namespace NS {

using namespace macOS;

const std::string& NotificationName::SystemClockDidChange() {
    static const std::string name = toString(NSSystemClockDidChangeNotification);
    return name;
}

const std::string& NotificationName::SystemTimeZoneDidChange() {
    static const std::string name = toString(NSSystemTimeZoneDidChangeNotification);
    return name;
}

NotificationCenter NotificationCenter::defaultCenter() {
    return handle<NotificationCenter>([NSNotificationCenter defaultCenter]);
}

Observer NotificationCenter::addObserverForName(const std::string& name,
                                                std::function<void(const Notification&)> block) {
    const auto registration = std::make_shared<Registration>(std::move(block));
    // Without a queue the block runs on the posting thread, before the post returns.
    const id token = [object<NSNotificationCenter>(*this) addObserverForName:toNSString(name)
                                                                      object:nil
                                                                       queue:nil
                                                                  usingBlock:^(NSNotification* notification) {
                                                                      enter(deliver, notification, registration);
                                                                  }];
    return handle<Observer>([[PlatformObserver alloc] initWithToken:token registration:registration]);
}

void NotificationCenter::removeObserver(const Observer& observer) {
    if (observer) {
        [object<PlatformObserver>(observer) endRegistration];
        [object<NSNotificationCenter>(*this) removeObserver:[object<PlatformObserver>(observer) token]];
    }
}

void NotificationCenter::postNotificationName(const std::string& name) {
    [object<NSNotificationCenter>(*this) postNotificationName:toNSString(name) object:nil];
}

} // namespace NS
