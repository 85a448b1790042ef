#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/Linux/Foundation/NotificationCenterNative.h"
#include "Platform/Linux/Native.h"
#include "Platform/NoDestructor.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Linux {

struct Registration {
    std::string name;
    std::function<void(const Notification&)> block;
    std::atomic<bool> isRemoved = false;
};

namespace {

/// Weak, so that a handle that is kept after the removal does not keep the block.
struct ObserverNative : Native {
    std::weak_ptr<Registration> registration;
};

} // namespace

template <>
struct NativeOf<Observer> : std::type_identity<ObserverNative> {};

std::vector<std::shared_ptr<Registration>> NotificationCenterNative::registrationsFor(const std::string& name) {
    const std::lock_guard guard(mutex);
    std::vector<std::shared_ptr<Registration>> result;
    std::copy_if(registrations.begin(), registrations.end(), std::back_inserter(result),
                 [&](const auto& registration) { return registration->name == name; });
    return result;
}

} // namespace Linux

namespace NS {

using namespace Linux;

NotificationCenter NotificationCenter::defaultCenter() {
    static NoDestructor<NotificationCenter> center(
        handle<NotificationCenter>(std::make_shared<NotificationCenterNative>()));
    return *center;
}

const std::string& NotificationName::SystemClockDidChange() {
    static const std::string name = "NSSystemClockDidChangeNotification";
    return name;
}

const std::string& NotificationName::SystemTimeZoneDidChange() {
    static const std::string name = "NSSystemTimeZoneDidChangeNotification";
    return name;
}

Observer NotificationCenter::addObserverForName(const std::string& name,
                                                std::function<void(const Notification&)> block) {
    auto registration = std::make_shared<Registration>();
    registration->name = name;
    registration->block = std::move(block);
    auto observer = std::make_shared<ObserverNative>();
    observer->registration = registration;

    auto& center = native(*this);
    const std::lock_guard guard(center.mutex);
    center.registrations.push_back(std::move(registration));
    return handle<Observer>(std::move(observer));
}

void NotificationCenter::removeObserver(const Observer& observer) {
    // Held until after the lock is given back: the block's destruction may run anything.
    const auto registration = observer ? native(observer).registration.lock() : nullptr;
    if (!registration) {
        return;
    }
    registration->isRemoved = true;
    auto& center = native(*this);
    const std::lock_guard guard(center.mutex);
    std::erase(center.registrations, registration);
}

void NotificationCenter::postNotificationName(const std::string& name) {
    const Notification notification{name};
    for (const auto& registration : native(*this).registrationsFor(name)) {
        if (!registration->isRemoved) { // perhaps by one of the blocks before it
            registration->block(notification);
        }
    }
}

} // namespace NS
