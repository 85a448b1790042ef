// What wayland-scanner makes of wayland-protocols' description of the idle inhibitor. It is C: its constants are seen
// from elsewhere only where the header has declared them before.
extern "C" {
#include "idle-inhibit-unstable-v1.h"

#include "idle-inhibit-unstable-v1-code.h"
}
