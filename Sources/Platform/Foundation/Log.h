#pragma once

#include <string>

namespace NS {

/// One line to the system log and to standard error (NSLog). Safe from any thread.
void Log(const std::string& line);

} // namespace NS
