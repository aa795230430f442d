# Debian packages, one per component of the installation that is listed: `cpack` in the build folder.

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL openfx)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Remap Color developers <remap-color@localhost>")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_OPENFX_PACKAGE_NAME remap-color-openfx)
set(CPACK_COMPONENT_OPENFX_DESCRIPTION
    "Remap Color for OpenFX hosts\n Levels, gamma, exposure, knee and curves per channel.")
include(CPack)
