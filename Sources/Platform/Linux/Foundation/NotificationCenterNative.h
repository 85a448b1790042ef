#pragma once

#include "Platform/Foundation/NotificationCenter.h"

namespace NS {

/// A centre of its own.
NotificationCenter makeNotificationCenter();

} // namespace NS
