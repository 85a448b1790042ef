#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Linux {

/// Starts a program, with no signal blocked or ignored. Its first descriptors are `descriptors`, from standard input
/// on, in which -1 stands for this process's own; it has no others. Nothing when it could not be started.
std::optional<pid_t> spawn(const std::string& executable, const std::vector<std::string>& arguments,
                           const std::vector<int>& descriptors);

} // namespace Linux
