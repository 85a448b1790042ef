#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/macOS/Conversions.h"

namespace NS {

NotificationCenter NotificationCenter::defaultCenter() {
    return handle<NotificationCenter>([NSNotificationCenter defaultCenter]);
}

Observer NotificationCenter::addObserverForName(const std::string& name,
                                                std::function<void(const Notification&)> block) {
    // Without a queue the block runs on the posting thread, before the post returns.
    return handle<Observer>([object<NSNotificationCenter>(*this)
        addObserverForName:toNSString(name)
                    object:nil
                     queue:nil
                usingBlock:^(NSNotification* notification) { enter(block, toNotification(notification)); }]);
}

void NotificationCenter::removeObserver(const Observer& observer) {
    [object<NSNotificationCenter>(*this) removeObserver:object<NSObject>(observer)];
}

void NotificationCenter::postNotificationName(const std::string& name) {
    [object<NSNotificationCenter>(*this) postNotificationName:toNSString(name) object:nil];
}

} // namespace NS
