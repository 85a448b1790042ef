#pragma once

#include <QObject>
#include <functional>

namespace Linux {

/// Calls back, once, when the session bus answers; false where there is none. Qt's own connection waits for a bus that
/// hangs, so ask here before the first use of it. Dropped with `owner`.
bool whenSessionBusAnswers(QObject* owner, std::function<void()> done);

} // namespace Linux
