#include "Platform/Linux/Power/IdleInhibitor.h"

namespace Linux {

void IdleInhibitor::setState(State state) {
    if (state == state_) {
        return;
    }
    constexpr const char* names[] = {"released", "asked", "granted", "refused"};
    qCDebug(powerLog) << name_ << names[static_cast<int>(state)];
    state_ = state;
    changed();
}

} // namespace Linux
