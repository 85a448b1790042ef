#include "LoginItem.h"

#include "Platform/Foundation/Log.h"
#include "Platform/ServiceManagement/AppService.h"
#include "Prefs.h"

namespace LoginItem {

bool set(bool enabled) {
    auto service = NS::AppService::mainAppService();
    if (const auto error = enabled ? service.registerAndReturnError() : service.unregisterAndReturnError()) {
        NS::Log(std::string("LoginItem: ") + (enabled ? "register" : "unregister") +
                " failed: " + error->localizedDescription);
        return false;
    }
    Prefs::d().setBoolForKey(enabled, Prefs::launchAtLogin);
    return true;
}

} // namespace LoginItem
