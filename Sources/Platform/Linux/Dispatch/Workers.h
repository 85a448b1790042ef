#pragma once

#include <chrono>

namespace Linux {

/// Waits until no worker runs a block, and says whether that came about in time.
bool waitForWorkers(std::chrono::milliseconds timeout);

} // namespace Linux
