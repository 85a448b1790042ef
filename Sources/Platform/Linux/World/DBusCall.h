#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <functional>

namespace NS {

/// Sends `call` and, when its answer comes, hands that to `done`, unless `owner` is gone by then. Never blocks and
/// never gives up: a service that hangs costs nothing, and is heard when it comes to.
void callLater(const QDBusConnection& bus, const QDBusMessage& call, QObject* owner,
               std::function<void(const QDBusMessage& answer)> done);

} // namespace NS
