#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the fuzzer, which then keeps the input.
inline void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}
