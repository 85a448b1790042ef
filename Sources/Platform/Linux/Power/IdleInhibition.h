#pragma once

#include "Platform/Linux/Power/BusInhibitor.h"
#include "Platform/Linux/Power/WaylandInhibitor.h"
#include "Platform/Linux/Power/XIdleReset.h"
#include "Platform/Linux/Power/XSaverInhibitor.h"

#include <array>

namespace Linux {

/// Keeps the session from idling by every means that it has, and knows which of them count. Main thread only.
class IdleInhibition {
public:
    IdleInhibition();

    void prepare();
    /// Asks all at once. Returns when one that counts has granted, or none will; the others may answer later.
    bool hold(const QString& application, const QString& reason);
    void release();

private:
    struct Means {
        IdleInhibitor* inhibitor;
        bool isEnough; // whether the session is held when nobody else grants
    };

    bool isHeld() const;
    bool isIdleTimeCovered() const;
    void waitForAnswer();

    BusInhibitor screenSaver_{screenSaver};
    BusInhibitor sessionManager_{sessionManager};
    BusInhibitor powerManagement_{powerManagement};
    BusInhibitor login_{login};
    WaylandInhibitor wayland_;
    XSaverInhibitor xSaver_;
    XIdleReset xIdleReset_;
    const std::array<Means, 7> all_;
};

} // namespace Linux
