#pragma once

#include <chrono>
#include <functional>

namespace NS {

/// Calls back once on the main thread when that much time has passed; this world's time.
void callAfter(double seconds, std::function<void()> callback);

/// Waits until no worker runs a block, and says whether that came about in time.
bool waitForWorkers(std::chrono::milliseconds patience);

} // namespace NS
