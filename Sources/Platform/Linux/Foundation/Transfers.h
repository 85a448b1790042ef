#pragma once

namespace Linux {

/// Makes the transfers under way fail, and all that follow: the application ends. Safe from any thread.
void cancelTransfers();

} // namespace Linux
