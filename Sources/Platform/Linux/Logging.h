#pragma once

#include <QLoggingCategory>

/// What happens and why, for whoever asks: QT_LOGGING_RULES="vantorel.*=true". Off by default; what the user's system
/// log is told goes through Log().
namespace Linux {

Q_DECLARE_LOGGING_CATEGORY(barLog)      // vantorel.bar: panel, tray, menu
Q_DECLARE_LOGGING_CATEGORY(busLog)      // vantorel.bus: connections to the buses
Q_DECLARE_LOGGING_CATEGORY(powerLog)    // vantorel.power: inhibitors
Q_DECLARE_LOGGING_CATEGORY(transferLog) // vantorel.transfer: requests and their outcomes

} // namespace Linux
