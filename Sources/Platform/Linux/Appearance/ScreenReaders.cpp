#include "Platform/Linux/BusProbe.h"
#include "Platform/Linux/Seam.h"

#include <QAccessible>
#include <QGuiApplication>

namespace Linux {

// What QGuiApplication::exec() does at once, and waits for a bus that hangs.
void meetScreenReaders() {
    whenSessionBusAnswers(qApp, [] { QAccessible::setRootObject(qApp); });
}

} // namespace Linux
