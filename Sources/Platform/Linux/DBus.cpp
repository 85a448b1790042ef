#include "Platform/Linux/DBus.h"

#include <QDBusPendingCallWatcher>
#include <limits>
#include <utility>

namespace Linux {

void callLater(const QDBusConnection& bus, const QDBusMessage& call, QObject* owner,
               std::function<void(const QDBusMessage& answer)> done) {
    constexpr int forever = std::numeric_limits<int>::max();
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(call, forever), owner);
    QObject::connect(pending, &QDBusPendingCallWatcher::finished, owner,
                     [done = std::move(done)](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         done(finished->reply());
                     });
}

} // namespace Linux
