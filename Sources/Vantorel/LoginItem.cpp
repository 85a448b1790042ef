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
    Prefs::d().setBool(enabled, Prefs::launchAtLogin);
    return true;
}

void applyForced() {
    if (!Prefs::d().objectIsForcedForKey(Prefs::launchAtLogin)) {
        return;
    }
    const bool wanted = Prefs::d().boolForKey(Prefs::launchAtLogin);
    const bool isEnabled = NS::AppService::mainAppService().status() == NS::AppServiceStatus::Enabled;
    if (isEnabled != wanted) { // or else each start would have a refusal to log
        set(wanted);
    }
}

} // namespace LoginItem
