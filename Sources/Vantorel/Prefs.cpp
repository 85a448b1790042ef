#include "Prefs.h"

#include "FatalError.h"
#include "Platform/NoDestructor.h"

#include <limits>

namespace Prefs {

NS::UserDefaults& d() {
    static NoDestructor<NS::UserDefaults> defaults(NS::UserDefaults::standardUserDefaults());
    return *defaults;
}

void registerDefaults() {
    d().registerDefaults({
        {launchAtLogin, true},
        {autoUpdate, true},
        {scheduleEnabled, false},
        {scheduleOnMinutes, 540},
        {scheduleOffMinutes, 1080},
    });
}

std::int64_t updateAttempts(const std::string& version) {
    const auto attempts = d().dictionaryForKey(updateAttemptsByVersion);
    if (!attempts) {
        return 0;
    }
    const auto entry = attempts->find(version);
    return entry == attempts->end() ? 0 : entry->second.integer().value_or(0);
}

void noteUpdateAttempt(const std::string& version) {
    auto attempts = d().dictionaryForKey(updateAttemptsByVersion).value_or(NS::Dictionary());
    for (const auto& [name, count] : attempts) {
        if (!count.integer()) { // one malformed count invalidates all
            attempts.clear();
            break;
        }
    }
    const auto entry = attempts.find(version);
    const std::int64_t count = entry == attempts.end() ? 0 : *entry->second.integer();
    if (count == std::numeric_limits<std::int64_t>::max()) {
        fatalError("the count of update attempts overflows");
    }
    d().setObject(NS::Dictionary{{version, count + 1}}, updateAttemptsByVersion);
}

} // namespace Prefs
