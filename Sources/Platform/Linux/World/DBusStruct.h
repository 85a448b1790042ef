#pragma once

#include <QDBusArgument>

namespace NS {

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

} // namespace NS
