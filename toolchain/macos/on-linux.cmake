# Included by the top-level CMakeLists.txt instead of the rest of it: builds each slice in a build of its own, then
# joins them into one bundle.
project(${PRODUCT_NAME} VERSION ${PRODUCT_VERSION} LANGUAGES NONE)
include(${CMAKE_CURRENT_LIST_DIR}/zig.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/seal.cmake)

option(VANTOREL_TESTS "Build the tests that need no world, though nothing here can run them" ON)

find_program(NPM npm REQUIRED)
find_program(LIPO llvm-lipo-19 REQUIRED)

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${MACOS_TOOLCHAIN}/package-lock.json)
if(${MACOS_TOOLCHAIN}/package-lock.json IS_NEWER_THAN ${MACOS_TOOLCHAIN}/node_modules/.package-lock.json)
    message(STATUS "Installing the compiler for macOS")
    execute_process(COMMAND ${NPM} ci --ignore-scripts --no-audit --no-fund
        WORKING_DIRECTORY ${MACOS_TOOLCHAIN} COMMAND_ERROR_IS_FATAL ANY)
endif()

# zig builds the C++ library from source when a program first needs it, and says where only to those who watch it link.
function(make_runtime arch directory)
    if(EXISTS ${directory}/libc++.a AND EXISTS ${directory}/libc++abi.a)
        return()
    endif()
    message(STATUS "Building the C++ library for ${arch}")
    file(MAKE_DIRECTORY ${directory})
    file(WRITE ${directory}/empty.cpp "int main() {}\n")
    execute_process(COMMAND ${CMAKE_COMMAND} -E env ZIG_VERBOSE_LINK=1
            ${ZIG} c++ -Os -target ${ZIG_TARGET_${arch}} ${directory}/empty.cpp -o ${directory}/empty
        ERROR_VARIABLE link_command RESULT_VARIABLE failed)
    foreach(library libc++ libc++abi)
        string(REPLACE "+" "\\+" pattern ${library})
        if(failed OR NOT link_command MATCHES "(/[^ \n]*/${pattern}\\.a)")
            message(FATAL_ERROR "zig did not say where ${library}.a is:\n${link_command}")
        endif()
        file(COPY ${CMAKE_MATCH_1} DESTINATION ${directory})
    endforeach()
endfunction()

set(bundle ${PRODUCT_NAME}.app)
set(program ${bundle}/Contents/MacOS/${PRODUCT_NAME})
set(info ${bundle}/Contents/Info.plist)
set(icon ${bundle}/Contents/Resources/${PRODUCT_NAME}.icns)
set(slices)
set(previous)
set(tests ${VANTOREL_TESTS}) # with the first slice, which shows that they compile and link
foreach(arch ${CMAKE_OSX_ARCHITECTURES})
    set(build ${CMAKE_BINARY_DIR}/${arch})
    set(runtime ${CMAKE_BINARY_DIR}/runtime-${arch})
    make_runtime(${arch} ${runtime})
    add_custom_target(${arch}
        COMMAND ${CMAKE_COMMAND} -S ${CMAKE_SOURCE_DIR} -B ${build} -G ${CMAKE_GENERATOR}
            --toolchain ${CMAKE_CURRENT_LIST_DIR}/cross.cmake
            -DVANTOREL_MACOS_ARCH=${arch} -DVANTOREL_MACOS_RUNTIME=${runtime}
            -DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE} -DCMAKE_UNITY_BUILD=ON -DVANTOREL_TESTS=${tests}
        COMMAND ${CMAKE_COMMAND} --build ${build}
        BYPRODUCTS ${build}/${program} ${build}/${info} ${build}/${icon}
        USES_TERMINAL VERBATIM)
    if(previous)
        add_dependencies(${arch} ${previous}) # each uses every core already
    endif()
    set(previous ${arch})
    set(tests OFF)
    list(APPEND slices ${build}/${program})
endforeach()

set(one_slice ${CMAKE_BINARY_DIR}/${previous})
set(joined ${CMAKE_BINARY_DIR}/joined)
add_custom_command(OUTPUT ${joined}
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${bundle}
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${one_slice}/${bundle} ${bundle}
    COMMAND ${LIPO} -create ${slices} -output ${program}
    COMMAND ${CMAKE_COMMAND} -E touch ${joined}
    DEPENDS ${slices} ${one_slice}/${info} ${one_slice}/${icon}
    VERBATIM)
seal(${CMAKE_BINARY_DIR}/${bundle} ${joined})
