# Installation and the Debian package.
#
# `cmake --install build` puts tarn and tarn-app in bin/, the desktop entry in
# share/applications/ and the icon in share/icons/hicolor/ (under /usr/local
# unless CMAKE_INSTALL_PREFIX says otherwise). `make package` (cpack) builds
# build/tarn_<version>-<build>_<arch>.deb for /usr, its dependencies worked
# out by dpkg-shlibdeps from the binaries, so all of them are Debian packages.

include(GNUInstallDirs)

install(TARGETS tarn RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(TARGET tarn-app)
  install(TARGETS tarn-app RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux/tarn.desktop
          DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/src/app/resources/tarn.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
  install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/src/app/resources/tarn-256.png
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/256x256/apps RENAME tarn.png)
endif()
install(FILES ${CMAKE_CURRENT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tarn)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarn)
set(CPACK_PACKAGE_VENDOR "Tarn")
set(CPACK_PACKAGE_CONTACT "Tarn developers <tarn@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Finds, sorts and safely copies, moves or deletes Avid media")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Tarn finds the media index files, media databases and MXF/OMF media of an Avid editing
system in the media folders of local and shared volumes, keeps them in one database
that you sort, filter and search, matches them against Avid bins and copies, moves or
deletes them without ever leaving a partial file. The package has the desktop
application (tarn-app) and the command-line tool (tarn).")
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${TARN_BUILD_NUMBER})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# The libraries the binaries link come from dpkg-shlibdeps; the window
# system's plugin is loaded at run time, so it is named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(TARGET tarn-app)
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "mediainfo-gui, xdg-utils")
endif()
include(CPack)
