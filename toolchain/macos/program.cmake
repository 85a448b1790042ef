# Included where the program's target is made, when it is made on a Mac: what stands in the bundle is small and signed.
# (On Linux the toolchain sees to both.)
include(${CMAKE_CURRENT_LIST_DIR}/seal.cmake)
target_link_options(Vantorel PRIVATE LINKER:-dead_strip)
add_custom_command(TARGET Vantorel POST_BUILD COMMAND strip -x $<TARGET_FILE:Vantorel> VERBATIM)
seal(${PROJECT_BINARY_DIR}/${PRODUCT_NAME}.app Vantorel ${contents}/Info.plist ${contents}/Resources/${PRODUCT_NAME}.icns)
