#pragma once

struct _XDisplay; // Xlib's Display; its header is full of macros
struct wl_display;

namespace Linux {

/// Sets the platform of Qt's windows, unless the environment has; ends the process where none can work.
void chooseDisplayServer();

/// A new connection to the session's Wayland compositor, whatever Qt's windows are on; null where there is none.
wl_display* connectToWayland();

/// The X server that Qt's windows are on; null for Xwayland, whose idle time and screen saver reach nobody.
_XDisplay* realXServer();

} // namespace Linux
