# Debian packages, one per component of the installation that is listed: `cpack` in the build folder.

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL openfx)
if(NOT REMAPCOLOR_BUNDLE_ONLY)
    list(APPEND CPACK_COMPONENTS_ALL program sdk)
    if(REMAPCOLOR_EDITOR)
        list(APPEND CPACK_COMPONENTS_ALL editor)
    endif()
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Remap Color developers <remap-color@localhost>")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
if(CMAKE_CROSSCOMPILING)
    # What is installed here is of another architecture.
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= 2.35)")
else()
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    # Our own libraries need each other.
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
        ${CMAKE_LIBRARY_OUTPUT_DIRECTORY} ${REMAPCOLOR_TOOL_DIRECTORY})
endif()

# add_package(COMPONENT NAME DESCRIPTION)
function(add_package component name description)
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}_DESCRIPTION ${description} PARENT_SCOPE)
    install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
        COMPONENT ${component})
endfunction()

add_package(program remap-color "Remap the colours of pictures and sequences
 Levels, gamma, exposure, knee and curves per channel, as a command line for EXR, PNG, TIFF, JPEG and
 DPX, and the tool that it sends them through.")
add_package(sdk remap-color-dev "Build tools and panels for Remap Color's host
 The headers of the host's interface and of the tool, and a package for CMake.")
add_package(editor remap-color-editor "Draw Remap Color's curves in a window
 A picture, the curves and the parameters of one node, for the projects of the command line.")
set(CPACK_DEBIAN_EDITOR_PACKAGE_DEPENDS "remap-color (= ${PROJECT_VERSION})")
add_package(openfx remap-color-openfx "Remap Color for OpenFX hosts
 Levels, gamma, exposure, knee and curves per channel.")
set(CPACK_DEBIAN_SDK_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_SDK_PACKAGE_DEPENDS "remap-color (= ${PROJECT_VERSION}), g++ (>= 4:12), cmake (>= 3.25)")
include(CPack)
