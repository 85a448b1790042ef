#pragma once

namespace Linux {

/// Makes the running transfers and all later ones fail, since the application ends. Safe from any thread.
void cancelTransfers();

} // namespace Linux
