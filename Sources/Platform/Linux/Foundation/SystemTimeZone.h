#pragma once

#include <QTimeZone>

namespace NS {

/// The zone that is in force now, always a valid one. Cheap enough to ask at every use. Safe from any thread.
QTimeZone systemTimeZone();

} // namespace NS
