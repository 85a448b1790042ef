#include "Platform/Linux/AppKit/DisplayServer.h"

#include "Platform/Foundation/Log.h"

#include <QDir>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <wayland-client-core.h>
#include <xcb/xcb.h>

namespace Linux {

namespace {

bool connectsToX() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool connects = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return connects;
}

bool connectsToWayland() {
    wl_display* const display = connectToWayland();
    if (display) {
        wl_display_disconnect(display);
    }
    return display != nullptr;
}

/// A package of its own, which is missing on many systems; Qt's plugin for X11 comes with Qt.
bool hasWaylandPlugin() {
    const QDir folder(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !folder.entryList({QStringLiteral("libqwayland*.so")}).isEmpty();
}

bool hasExtension(xcb_connection_t* server, std::string_view name) {
    const auto request = xcb_query_extension(server, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_query_extension_reply_t, decltype(&std::free)> answer(
        xcb_query_extension_reply(server, request, nullptr), std::free);
    return answer && answer->present;
}

// It says so itself since 22.1; before, the compositor tells.
bool isXwayland(xcb_connection_t* server) {
    return hasExtension(server, "XWAYLAND") || connectsToWayland();
}

} // namespace

// Qt would end the process by a crash.
void chooseDisplayServer() {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        return;
    }
    const bool isWayland = connectsToWayland();
    if (connectsToX()) { // with a Wayland session too: a menu can be placed at the cup
        qputenv("QT_QPA_PLATFORM", "xcb");
    } else if (isWayland && hasWaylandPlugin()) {
        qputenv("QT_QPA_PLATFORM", "wayland");
    } else {
        NS::Log(isWayland ? "no display: Xwayland or Qt's plugin for Wayland (qt6-wayland) is needed"
                          : "no display: neither DISPLAY nor WAYLAND_DISPLAY names a server that answers");
        std::exit(EXIT_FAILURE);
    }
}

// Without a name, libwayland would try a compositor of another session.
wl_display* connectToWayland() {
    return qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ? nullptr : wl_display_connect(nullptr);
}

_XDisplay* realXServer() {
    static _XDisplay* const server = []() -> _XDisplay* {
        const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
        const bool isOnX = x11 && x11->connection(); // the off-screen platform has the one without the other
        return isOnX && !isXwayland(x11->connection()) ? x11->display() : nullptr;
    }();
    return server;
}

} // namespace Linux
