#pragma once

#include "Platform/Linux/Power/IdleInhibitor.h"

#include <QTimer>

namespace Linux {

/// For programs that ask nobody and act on the X server's idle time: begins that anew every half minute. Two wake-ups a
/// minute, so only while nothing better is known to hold.
class XIdleReset final : public IdleInhibitor {
public:
    XIdleReset();

    void ask(const QString& application, const QString& reason) override;
    void release() override;

    /// Whether nothing else covers whoever looks at the idle time.
    void setNeeded(bool isNeeded);

private:
    void reset();
    void update();

    QTimer timer_;
    bool isNeeded_ = true;
};

} // namespace Linux
