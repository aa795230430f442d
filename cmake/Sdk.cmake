# What others build tools and panels with: the headers that tools and panels see, and a package for
# find_package(RemapColor). The libraries themselves come with the program.

include(CMakePackageConfigHelpers)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/RemapColor)
install(DIRECTORY host/interface/ DESTINATION ${REMAPCOLOR_SDK_HEADERS}
    COMPONENT sdk FILES_MATCHING PATTERN *.h)
install(DIRECTORY host/callbacks DESTINATION ${REMAPCOLOR_SDK_HEADERS}
    COMPONENT sdk FILES_MATCHING PATTERN *.h)
# Of the tool: what its library offers, and what these headers include.
set(headers Callbacks Controller CurveLUTUtils EXRMode Export LinearMode ModeFactory VxtoolInit)
list(TRANSFORM headers PREPEND tools/remapColor/src/remapColor)
list(TRANSFORM headers APPEND .h)
install(FILES ${headers} DESTINATION ${REMAPCOLOR_SDK_HEADERS}/remapColor COMPONENT sdk)

install(TARGETS VXheaders VXcallbacks EXPORT RemapColor)
install(EXPORT RemapColor NAMESPACE RemapColor:: FILE RemapColorTargets.cmake
    DESTINATION ${package} COMPONENT sdk)
configure_package_config_file(cmake/RemapColorConfig.cmake.in RemapColorConfig.cmake
    INSTALL_DESTINATION ${package})
write_basic_package_version_file(RemapColorConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RemapColorConfig.cmake
    ${PROJECT_BINARY_DIR}/RemapColorConfigVersion.cmake
    DESTINATION ${package} COMPONENT sdk)
