# Installs the library for hosts: headers, a CMake config package and a pkg-config file. The components are those of the
# packages in cmake/DebianPackages.cmake.
include(CMakePackageConfigHelpers)

set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/zephmetadata")

install(TARGETS zephmetadata EXPORT zephmetadata-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/zephmetadata
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")
# Of the platform component what exports something: the public headers need base.h and files.h, hosts the others.
foreach(header IN ITEMS base environment files language_tags localizer text xml)
  install(FILES ${PROJECT_SOURCE_DIR}/include/zephcore/${header}.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zephcore COMPONENT development)
endforeach()

install(EXPORT zephmetadata-targets NAMESPACE zephmetadata:: DESTINATION ${packageFolder}
  COMPONENT development)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/zephmetadata-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata-config.cmake
  INSTALL_DESTINATION ${packageFolder}
  NO_SET_AND_CHECK_MACRO)
set(compatibility SameMajorVersion)
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
endif()
write_basic_package_version_file(
  ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata-config-version.cmake
  COMPATIBILITY ${compatibility})
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata-config-version.cmake
  DESTINATION ${packageFolder} COMPONENT development)

# Relative to the file's own place, so that an installed tree can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE includeFromPkgConfig)
configure_file(${PROJECT_SOURCE_DIR}/cmake/zephmetadata.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zephmetadata.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  PATTERN CMakeLists.txt EXCLUDE PATTERN "*.cmake" EXCLUDE)
