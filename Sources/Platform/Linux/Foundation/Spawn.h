#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Linux {

/// Starts a program, with no signal blocked or ignored. Its descriptors are `descriptors`, from standard input on, in
/// which -1 stands for this process's own; it has no others. Absent when the program could not be started.
std::optional<pid_t> spawn(const std::string& executable, const std::vector<std::string>& arguments,
                           const std::vector<int>& descriptors);

/// Waits until a child of this process has ended, and gives its status as waitpid does.
int waitFor(pid_t child);

} // namespace Linux
