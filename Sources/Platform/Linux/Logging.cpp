#include "Platform/Linux/Logging.h"

namespace Linux {

Q_LOGGING_CATEGORY(barLog, "vantorel.bar", QtFatalMsg)
Q_LOGGING_CATEGORY(busLog, "vantorel.bus", QtFatalMsg)
Q_LOGGING_CATEGORY(powerLog, "vantorel.power", QtFatalMsg)
Q_LOGGING_CATEGORY(transferLog, "vantorel.transfer", QtFatalMsg)

} // namespace Linux
