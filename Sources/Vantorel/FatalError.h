#pragma once

#include <cstdio>
#include <cstdlib>

/// Reports a programming error and stops the process.
[[noreturn]] inline void fatalError(const char* message) {
    std::fprintf(stderr, "Fatal error: %s\n", message);
    std::abort();
}
