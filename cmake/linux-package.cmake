# What is installed on Linux, and the Debian package of it: cmake --build build/linux --target package
include(GNUInstallDirs)
set(packaging ${PROJECT_SOURCE_DIR}/Packaging)
set(application ${PRODUCT_NAME}.app)
string(TOLOWER ${PRODUCT_NAME} command)

# The same bundle as on a Mac, whole: the program finds its name and version in it.
install(TARGETS Vantorel Transfer DESTINATION lib/${command}/${application}/Contents/MacOS)
install(FILES ${PROJECT_BINARY_DIR}/${application}/Contents/Info.plist DESTINATION lib/${command}/${application}/Contents)
install(FILES ${packaging}/icons/Vantorel.icns
    DESTINATION lib/${command}/${application}/Contents/Resources RENAME ${PRODUCT_NAME}.icns)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/links)
file(CREATE_LINK ../lib/${command}/${application}/Contents/MacOS/${PRODUCT_NAME} ${PROJECT_BINARY_DIR}/links/${command}
    SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/links/${command} TYPE BIN)

foreach(size 16 22 24 32 48 64 128 256 512)
    install(FILES ${packaging}/icons/${size}.png
        DESTINATION share/icons/hicolor/${size}x${size}/apps RENAME ${PRODUCT_BUNDLE_IDENTIFIER}.png)
endforeach()
configure_file(${packaging}/linux/vantorel.desktop.in ${PRODUCT_BUNDLE_IDENTIFIER}.desktop @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/${PRODUCT_BUNDLE_IDENTIFIER}.desktop DESTINATION share/applications)
configure_file(${packaging}/linux/vantorel.metainfo.xml.in ${PRODUCT_BUNDLE_IDENTIFIER}.metainfo.xml @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/${PRODUCT_BUNDLE_IDENTIFIER}.metainfo.xml DESTINATION share/metainfo)
install(FILES ${packaging}/linux/vantorel.1 DESTINATION share/man/man1)
install(FILES ${packaging}/linux/copyright DESTINATION share/doc/${command})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${command})
set(CPACK_PACKAGE_VENDOR "${PRODUCT_NAME}")
set(CPACK_PACKAGE_CONTACT "The ${PRODUCT_NAME} developers <vantorel@${PRODUCT_UPDATE_HOST}>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "coffee cup in the panel that keeps the machine awake")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"One click on the cup, and neither the display nor the system goes to sleep
because you are idle; another click, and they may again. A daily schedule can
do the clicking. It asks every service of the session that keeps a machine
awake, and needs no rights and no configuration.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION x11)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://${PRODUCT_UPDATE_HOST})
set(CPACK_PRE_BUILD_SCRIPTS ${packaging}/linux/finish-package.cmake)
include(CPack)
