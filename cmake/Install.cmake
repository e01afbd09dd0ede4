# What `cmake --install` lays out: libraries, public headers, a CMake package and a pkg-config file.

include(CMakePackageConfigHelpers)

install(TARGETS surveymsg tarvex lumbra EXPORT surveymsgTargets)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/surveymsg
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h"
    PATTERN detail EXCLUDE)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/surveymsg)
install(EXPORT surveymsgTargets NAMESPACE surveymsg:: DESTINATION ${package_dir})
configure_package_config_file(cmake/surveymsgConfig.cmake.in ${CMAKE_BINARY_DIR}/surveymsgConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/surveymsgConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/surveymsgConfig.cmake ${CMAKE_BINARY_DIR}/surveymsgConfigVersion.cmake
    DESTINATION ${package_dir})

# The file finds the prefix from its own place, so an installed tree can be moved.
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/surveymsg.pc.in ${CMAKE_BINARY_DIR}/surveymsg.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/surveymsg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
