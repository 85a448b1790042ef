# Run by CPack on the tree that becomes the package: adds what Debian's policy asks for, and lets everyone read
# it, whatever the umask of the build.
set(documentation ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share/doc/${CPACK_PACKAGE_NAME})
execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../changelog debian ${CPACK_PACKAGE_CONTACT}
    OUTPUT_FILE ${documentation}/changelog COMMAND_ERROR_IS_FATAL ANY)
file(GLOB manual_pages ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/man1/*)
execute_process(COMMAND gzip -9n ${documentation}/changelog ${manual_pages} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND chmod -R u=rwX,go=rX ${CPACK_TEMPORARY_INSTALL_DIRECTORY} COMMAND_ERROR_IS_FATAL ANY)
