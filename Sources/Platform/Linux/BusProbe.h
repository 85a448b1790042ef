#pragma once

#include "Platform/Linux/BusConnection.h"

#include <QObject>

namespace Linux {

/// Calls back, once, when the bus answers; false where there is none. Qt's own connections wait for a bus that hangs,
/// so ask here before the first use of one. Dropped with `owner`.
bool whenBusAnswers(BusKind kind, QObject* owner, std::function<void()> done);

} // namespace Linux
