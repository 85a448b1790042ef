#pragma once

#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Linux/Native.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Linux {

struct Registration;

struct NotificationCenterNative : Native {
    std::mutex mutex; // guards the members below; not held while blocks run
    std::vector<std::shared_ptr<Registration>> registrations;

    std::vector<std::shared_ptr<Registration>> registrationsFor(const std::string& name);
};

template <>
struct NativeOf<NotificationCenter> : std::type_identity<NotificationCenterNative> {};

} // namespace Linux
