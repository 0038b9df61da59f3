# Installs the library for hosts: headers, a CMake config package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/zephmetadata")

install(TARGETS zephmetadata EXPORT zephmetadata-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/zephmetadata
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
# Of the platform component what exports something: the public headers need base.h and files.h, hosts the others.
foreach(header IN ITEMS base environment files localizer text xml)
  install(FILES ${PROJECT_SOURCE_DIR}/include/zephcore/${header}.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zephcore)
endforeach()

install(EXPORT zephmetadata-targets NAMESPACE zephmetadata:: DESTINATION ${packageFolder})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/zephmetadata-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata-config.cmake
  INSTALL_DESTINATION ${packageFolder}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata-config-version.cmake
  DESTINATION ${packageFolder})

# Relative to the file's own place, so that an installed tree can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE includeFromPkgConfig)
configure_file(${PROJECT_SOURCE_DIR}/cmake/zephmetadata.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
