#pragma once

#include "Platform/Foundation/Object.h"

#include <functional>
#include <string>

namespace NS {

struct Notification {
    std::string name;
};

namespace NotificationName {
/// Posted on the default center, on the main thread, when the system's clock has been set.
const std::string& SystemClockDidChange();
/// Posted on the default center, on the main thread, when the system's time zone has changed.
const std::string& SystemTimeZoneDidChange();
} // namespace NotificationName

/// The result of `addObserverForName`, with which `removeObserver` removes the observer.
class Observer : public Object {
public:
    using Object::Object;
};

/// Delivers named notifications inside the process (NSNotificationCenter). Safe from any thread.
class NotificationCenter : public Object {
public:
    static NotificationCenter defaultCenter();

    /// Calls `block` for each notification of that name, whoever posts it, on the thread that posts it, until the
    /// observer is removed. The center keeps the block: it must hold its owner weakly.
    Observer addObserverForName(const std::string& name, std::function<void(const Notification&)> block);
    void removeObserver(const Observer& observer);

    /// Calls every observer of `name` before it returns. Posted with no object and no user information.
    void postNotificationName(const std::string& name);

    using Object::Object;
};

} // namespace NS
