#pragma once

#include <QObject>
#include <chrono>
#include <functional>

namespace Linux {

/// Calls back, once, when the session bus answers; false where there is none. Qt's own connection waits for a bus that
/// hangs, so ask here before the first use of it. Dropped with `owner`. Returns when it has answered or `patience` is
/// over; the call back comes later in any case.
bool whenSessionBusAnswers(QObject* owner, std::function<void()> done, std::chrono::milliseconds patience = {});

} // namespace Linux
