#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Object.h"

#include <optional>

namespace NS {

enum class AppServiceStatus : long { NotRegistered = 0, Enabled = 1, RequiresApproval = 2, NotFound = 3 };

/// Something the system starts for the user (SMAppService).
class AppService : public Object {
public:
    /// The application itself, started when the user logs in.
    static AppService mainAppService();

    AppServiceStatus status() const; // asked of the system anew each time

    /// Nothing on success, otherwise the reason for the refusal.
    std::optional<Error> registerAndReturnError();
    std::optional<Error> unregisterAndReturnError();

    using Object::Object;
};

} // namespace NS
