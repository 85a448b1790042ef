#pragma once

#include <cstdio>
#include <cstdlib>

/// A programming error: says what is wrong and stops the process.
[[noreturn]] inline void fatalError(const char* message) {
    std::fprintf(stderr, "Fatal error: %s\n", message);
    std::abort();
}
