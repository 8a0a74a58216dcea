# What an installation holds: two shared libraries, the public headers, a CMake
# package with the target qxsystem::qxsystem, and a pkg-config file.

include(CMakePackageConfigHelpers)

set(qx_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qxsystem)

# The two libraries lie in one directory, wherever that is.
set_target_properties(qxsystem PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS qxplatform qxsystem EXPORT qxsystem-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}  # for a CMake before 3.23, without file sets
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT qxsystem-targets NAMESPACE qxsystem:: DESTINATION ${qx_package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qxsystem-config.cmake.in
  ${PROJECT_BINARY_DIR}/qxsystem-config.cmake INSTALL_DESTINATION ${qx_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qxsystem-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/qxsystem-config.cmake
  ${PROJECT_BINARY_DIR}/qxsystem-config-version.cmake
  DESTINATION ${qx_package_dir})

# The pkg-config file finds the prefix from where it lies, so that an
# installation can be moved.
set(qx_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH qx_prefix_from_pkgconfig
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" qx_prefix_from_pkgconfig "${qx_prefix_from_pkgconfig}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/qxsystem.pc.in ${PROJECT_BINARY_DIR}/qxsystem.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qxsystem.pc DESTINATION ${qx_pkgconfig_dir})
