// What wayland-scanner makes of wayland-protocols' descriptions. It is C: its constants are seen from elsewhere only
// where the headers have declared them before.
extern "C" {
#include "idle-inhibit-unstable-v1.h"
#include "viewporter.h"

#include "idle-inhibit-unstable-v1-code.h"
#include "viewporter-code.h"
}
