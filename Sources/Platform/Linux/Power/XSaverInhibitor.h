#pragma once

#include "Platform/Linux/Power/IdleInhibitor.h"

namespace Linux {

/// The X server's own screen saver and power saving (DPMS).
/// https://www.x.org/releases/current/doc/scrnsaverproto/saver.html
class XSaverInhibitor final : public IdleInhibitor {
public:
    XSaverInhibitor() : IdleInhibitor("XScreenSaverSuspend") {}

    void prepare() override;
    void ask(const QString& application, const QString& reason) override;
    void release() override;

private:
    void suspend(bool isSuspended);

    bool canSuspend_ = false;
};

} // namespace Linux
