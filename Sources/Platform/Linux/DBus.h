#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <functional>

namespace Linux {

/// Sends `call` and, when its answer comes, hands that to `done`, unless `owner` is gone by then. Never blocks and
/// never gives up: a service that hangs costs nothing, and is heard when it comes to.
void callLater(const QDBusConnection& bus, const QDBusMessage& call, QObject* owner,
               std::function<void(const QDBusMessage& answer)> done);

/// For the operators that bring a structure onto the bus and back.
template <class... Fields>
QDBusArgument& writeStruct(QDBusArgument& out, const Fields&... fields) {
    out.beginStructure();
    (out << ... << fields);
    out.endStructure();
    return out;
}

template <class... Fields>
const QDBusArgument& readStruct(const QDBusArgument& in, Fields&... fields) {
    in.beginStructure();
    (in >> ... >> fields);
    in.endStructure();
    return in;
}

} // namespace Linux
