#pragma once

#include <string>

namespace NS {

/// One line to the system log and to standard error (NSLog); a control character in it shows as a space. Safe from any
/// thread.
void Log(const std::string& line);

} // namespace NS
