#include "Platform/Linux/BusProbe.h"
#include "Platform/Linux/Seam.h"

#include <QAccessible>
#include <QGuiApplication>
#include <chrono>

namespace Linux {

namespace {

using namespace std::chrono_literals;

constexpr char busAddress[] = "AT_SPI_BUS_ADDRESS"; // what Qt uses instead of asking the session bus for it
constexpr auto startPatience = 1000ms;              // of the start, with a bus that hangs

} // namespace

// Qt looks for screen readers with its first window or menu, and waits for a bus that hangs. While this one does, Qt
// gets an address where nobody is; a window that is shown then is one that screen readers never hear of.
void meetScreenReaders() {
    if (qEnvironmentVariableIsSet(busAddress)) {
        return;
    }
    qputenv(busAddress, "unix:path=/dev/null");
    const auto meet = [] {
        qunsetenv(busAddress);
        QAccessible::setRootObject(qApp); // as QGuiApplication::exec() does
    };
    whenSessionBusAnswers(qApp, meet, startPatience);
}

} // namespace Linux
