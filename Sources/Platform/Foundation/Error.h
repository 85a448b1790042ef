#pragma once

#include <string>

namespace NS {

/// Why the platform refused (NSError), as far as the program needs it: one sentence for the log.
struct Error {
    std::string localizedDescription;
};

} // namespace NS
