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
    std::mutex mutex; // guards what follows; never held while foreign code runs
    std::vector<std::shared_ptr<Registration>> registrations;

    std::vector<std::shared_ptr<Registration>> registrationsFor(const std::string& name);
};

template <>
struct NativeOf<NotificationCenter> : std::type_identity<NotificationCenterNative> {};

} // namespace Linux
