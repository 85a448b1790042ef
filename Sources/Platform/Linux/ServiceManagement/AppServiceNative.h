#pragma once

#include "Platform/Foundation/Bundle.h"
#include "Platform/ServiceManagement/AppService.h"

namespace NS {

/// The service that starts a bundle's executable when the user logs in.
AppService appServiceOfBundle(const Bundle& bundle);

} // namespace NS
