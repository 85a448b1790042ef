#pragma once

#include "Platform/Foundation/Bundle.h"
#include "Platform/Linux/Native.h"
#include "Platform/ServiceManagement/AppService.h"

#include <utility>

namespace Linux {

/// The service that starts a bundle's executable when the user logs in.
struct AppServiceNative : Native {
    explicit AppServiceNative(Bundle served) : bundle(std::move(served)) {}

    const Bundle bundle;
};

template <>
struct NativeOf<AppService> : std::type_identity<AppServiceNative> {};

} // namespace Linux
