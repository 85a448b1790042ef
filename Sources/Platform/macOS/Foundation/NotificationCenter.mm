#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/macOS/Conversions.h"

#include <dispatch/dispatch.h>

namespace macOS {

namespace {

using Block = std::function<void(const Notification&)>;

// The system posts these two on a thread of its choice.
bool belongsOnMainThread(NSNotificationName name) {
    return [name isEqualToString:NSSystemClockDidChangeNotification] ||
           [name isEqualToString:NSSystemTimeZoneDidChangeNotification];
}

// The function comes by value: captured through a reference, it would be gone if the observer is removed meanwhile.
void deliver(NSNotification* notification, Block block) {
    if ([NSThread isMainThread] || !belongsOnMainThread([notification name])) {
        block(toNotification(notification));
        return;
    }
    dispatch_async(dispatch_get_main_queue(), ^{
        enter([&] { block(toNotification(notification)); });
    });
}

} // namespace

} // namespace macOS

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

Observer NotificationCenter::addObserverForName(const std::string& name, Block block) {
    // Without a queue the block runs on the posting thread, before the post returns.
    return handle<Observer>([object<NSNotificationCenter>(*this)
        addObserverForName:toNSString(name)
                    object:nil
                     queue:nil
                usingBlock:^(NSNotification* notification) {
                    enter([&] { deliver(notification, block); });
                }]);
}

void NotificationCenter::removeObserver(const Observer& observer) {
    [object<NSNotificationCenter>(*this) removeObserver:object<NSObject>(observer)];
}

void NotificationCenter::postNotificationName(const std::string& name) {
    [object<NSNotificationCenter>(*this) postNotificationName:toNSString(name) object:nil];
}

} // namespace NS
