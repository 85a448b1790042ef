#include "Platform/Linux/Power/XSaverInhibitor.h"

#include "Platform/Linux/AppKit/DisplayServer.h"

// Last, for its macros.
#include <X11/extensions/scrnsaver.h>

namespace Linux {

namespace {

bool canSuspend(Display* server) {
    int event = 0;
    int error = 0;
    int major = 0;
    int minor = 0;
    return XScreenSaverQueryExtension(server, &event, &error) && XScreenSaverQueryVersion(server, &major, &minor) &&
           (major > 1 || (major == 1 && minor >= 1));
}

} // namespace

void XSaverInhibitor::prepare() {
    canSuspend_ = realXServer() && canSuspend(realXServer());
}

void XSaverInhibitor::ask(const QString&, const QString&) {
    if (canSuspend_) {
        suspend(true);
    }
    setState(canSuspend_ ? State::Granted : State::Refused);
}

void XSaverInhibitor::release() {
    if (isGranted()) {
        suspend(false);
    }
    setState(State::Released);
}

// The server counts, for each client, how often it was asked.
void XSaverInhibitor::suspend(bool isSuspended) {
    XScreenSaverSuspend(realXServer(), isSuspended);
    XFlush(realXServer());
}

} // namespace Linux
