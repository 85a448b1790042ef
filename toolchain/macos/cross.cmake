# The toolchain that builds for macOS on Linux, one processor at a time, against this project's own declarations of the
# system's frameworks. on-linux.cmake sets the variables.
set(VANTOREL_MACOS_ARCH "arm64" CACHE STRING "arm64 or x86_64")
set(VANTOREL_MACOS_RUNTIME "" CACHE PATH "Where libc++.a and libc++abi.a for that processor are")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANTOREL_MACOS_ARCH)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY) # the linker below is for the program only
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/Product.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/zig.cmake)

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${VANTOREL_MACOS_ARCH})
set(CMAKE_CXX_COMPILER ${ZIG} c++)
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19)

set(CMAKE_CXX_FLAGS_INIT "-target ${ZIG_TARGET_${VANTOREL_MACOS_ARCH}} -F${MACOS_SDK}")
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Not zig's own linker: it neither strips, nor signs for Intel. Nothing is exported, since the system's libc++ in the
# same process would otherwise share, by name, what the one linked in here defines.
string(JOIN " " CMAKE_CXX_LINK_EXECUTABLE
    ld64.lld-19 -arch ${VANTOREL_MACOS_ARCH} -platform_version macos ${PRODUCT_MINIMUM_MACOS} ${ZIG_MACOS_SDK_VERSION}
    -F${MACOS_SDK} -L${MACOS_SDK}/usr/lib -L${ZIG_MACOS_LIB}
    -dead_strip -x -no_exported_symbols -adhoc_codesign -fatal_warnings
    -o <TARGET> <LINK_FLAGS> <OBJECTS> <LINK_LIBRARIES>
    ${VANTOREL_MACOS_RUNTIME}/libc++abi.a ${VANTOREL_MACOS_RUNTIME}/libc++.a -lSystem)
