# CPack: a Debian package of what `cmake --install` installs (the plug-in, both
# libraries, zet, the headers, the CMake and pkg-config files, the licence).
#
#   cpack --config build/release/CPackConfig.cmake -B DIR      # DIR/zetformulalib_*.deb
#
# The package's library dependencies are computed by dpkg-shlibdeps from the binaries
# themselves, so a plug-in-only build does not depend on the host's libraries.
set(CPACK_GENERATOR DEB)
if(WIN32)
  # Windows builds: a zip of the same install tree, with the plug-in beside zet.exe
  # and the compiler's runtime DLLs (cmake/WindowsRuntime.cmake).
  set(CPACK_GENERATOR ZIP)
  set(CPACK_SYSTEM_NAME ${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
endif()
set(CPACK_PACKAGE_NAME zetformulalib)
set(CPACK_PACKAGE_VENDOR "ZetFormulaLib developers")
set(CPACK_PACKAGE_CONTACT "ZetFormulaLib developers <zetformulalib@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "Formula instruction plug-in for machine-vision inspection hosts, with its platform library and the zet host")
set(CPACK_PACKAGE_DESCRIPTION
  "The ZetFormulaLib plug-in (arithmetic, statistics, strings, typed arrays, geometry, system services, annotations and polarization image processing instructions), the zetplatform library it stands on, the reference host library zethost with its command line zet, and the headers, CMake package and pkg-config file to build hosts against them.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
if(NOT WIN32)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Where dpkg-shlibdeps finds the package's own libraries, which no installed package
# provides yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/bin)
include(CPack)
