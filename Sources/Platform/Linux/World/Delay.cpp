#include "Platform/Linux/Dispatch/DispatchQueueNative.h"

#include <QCoreApplication>
#include <QTimer>
#include <chrono>

namespace NS {

void callAfter(double seconds, std::function<void()> callback) {
    const auto delay = std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
    QTimer::singleShot(delay, Qt::PreciseTimer, QCoreApplication::instance(), std::move(callback));
}

} // namespace NS
