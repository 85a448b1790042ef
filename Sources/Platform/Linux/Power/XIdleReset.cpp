#include "Platform/Linux/Power/XIdleReset.h"

#include "Platform/Linux/AppKit/DisplayServer.h"

#include <chrono>

// Last, for its macros.
#include <X11/Xlib.h>

namespace Linux {

using namespace std::chrono_literals;

XIdleReset::XIdleReset() : IdleInhibitor("XResetScreenSaver") {
    timer_.setTimerType(Qt::PreciseTimer); // a coarse one may come early, which is a third wake-up a minute
    timer_.setInterval(30s);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { reset(); });
}

void XIdleReset::ask(const QString&, const QString&) {
    if (realXServer()) {
        reset();
    }
    setState(realXServer() ? State::Granted : State::Refused);
    update();
}

void XIdleReset::release() {
    setState(State::Released);
    update();
}

void XIdleReset::setNeeded(bool isNeeded) {
    isNeeded_ = isNeeded;
    update();
}

void XIdleReset::reset() {
    XResetScreenSaver(realXServer());
    XFlush(realXServer());
}

void XIdleReset::update() {
    const bool runs = isGranted() && isNeeded_;
    if (runs == timer_.isActive()) {
        return;
    }
    qCDebug(powerLog) << "XResetScreenSaver" << (runs ? "every 30 s" : "no more");
    if (runs) {
        timer_.start();
    } else {
        timer_.stop();
    }
}

} // namespace Linux
