#pragma once

#include <chrono>

namespace Linux {

/// Waits until no worker runs a block. False when the timeout came first.
bool waitForWorkers(std::chrono::milliseconds timeout);

} // namespace Linux
