#pragma once

#include "Platform/Foundation/NotificationCenter.h"

#include <memory>

namespace NS {

/// Tells of the machine waking, on the workspace's centre, and of the clock or the time zone changing, on the default
/// one, for as long as what it returns lives.
std::shared_ptr<void> watchSystem(const NotificationCenter& workspaceCenter);

} // namespace NS
