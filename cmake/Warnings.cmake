# Every target of ours links this: one set of warnings, all of them errors.
add_library(Warnings INTERFACE)
target_compile_options(Warnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    $<IF:$<CXX_COMPILER_ID:GNU>,-Wshadow=local,-Wshadow> -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast -Wcast-qual -Wformat=2 -Wimplicit-fallthrough -Wundef)
