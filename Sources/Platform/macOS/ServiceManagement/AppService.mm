#include "Platform/ServiceManagement/AppService.h"

#include "Platform/macOS/Conversions.h"

#import <ServiceManagement/ServiceManagement.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<long>(AppServiceStatus::NotRegistered) == SMAppServiceStatusNotRegistered);
static_assert(static_cast<long>(AppServiceStatus::Enabled) == SMAppServiceStatusEnabled);
static_assert(static_cast<long>(AppServiceStatus::RequiresApproval) == SMAppServiceStatusRequiresApproval);
static_assert(static_cast<long>(AppServiceStatus::NotFound) == SMAppServiceStatusNotFound);

AppService AppService::mainAppService() {
    return handle<AppService>([SMAppService mainAppService]);
}

AppServiceStatus AppService::status() const {
    return static_cast<AppServiceStatus>([object<SMAppService>(*this) status]);
}

std::optional<Error> AppService::registerAndReturnError() {
    NSError* error = nil;
    const BOOL done = [object<SMAppService>(*this) registerAndReturnError:&error];
    return done ? std::nullopt : std::optional(toError(error));
}

std::optional<Error> AppService::unregisterAndReturnError() {
    NSError* error = nil;
    const BOOL done = [object<SMAppService>(*this) unregisterAndReturnError:&error];
    return done ? std::nullopt : std::optional(toError(error));
}

} // namespace NS
