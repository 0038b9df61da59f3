# Debian packages, made by "cmake --preset package", "cmake --build --preset package" and "cpack" in build/package: the
# library, what hosts compile with, the command line, the Python package, the documentation, and debugging information for the two that hold
# programs. They go by Debian's own rules, so lintian has nothing against them but what it says of an unofficial package.
if(NOT ZEPHMETADATA_DEBIAN_PACKAGES)
  return()
endif()

set(libraryPackage libzephmetadata${ZEPHMETADATA_ABI})
set(exactly "(= ${PROJECT_VERSION}-1)")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "zephmetadata authors <maintainers@zephmetadata.org>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# Each package has a synopsis of its own; the debugging information is taken out while packages are made.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_STRIP_FILES OFF)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/use_ldconfig_trigger.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development tools documentation)
if(TARGET zephmetadata_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE zephmetadata)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR}/src)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${libraryPackage})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "typed, schema-driven access to XMP metadata
Photo and video managers, asset systems and editors read and edit the XMP
metadata of media files with it: typed values, definitions of properties,
panels, several files as one, and writing that never damages a file.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARY_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzephmetadata-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${libraryPackage} ${exactly}, libboost-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "typed, schema-driven access to XMP metadata - development files
What programs that use the library are compiled with: headers, a CMake
package and a pkg-config file.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zephmeta)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${libraryPackage} ${exactly}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "command line for the XMP metadata of photos and videos
Shows metadata as panels of an editor would, finds, reads, edits and checks
the values of many files, and works with templates and extension packages.")

# Debian's Python packages are compiled where they are installed, by the scripts that its py3compile comes with.
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-zephmetadata)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${libraryPackage} ${exactly}, ${ZEPHMETADATA_PYTHON_DEPENDS}")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-pandas, python3-dask, python3-distributed")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PYTHON_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "metadata of photos, videos and documents as Python values
Reads and writes XMP, Exif and IPTC by path, from one file to collections
as tables, on one machine or with Dask on many.")
set(pythonScripts ${CMAKE_CURRENT_BINARY_DIR}/python-scripts)
file(WRITE ${pythonScripts}/postinst "#!/bin/sh\nset -e\nif command -v py3compile >/dev/null; then\n"
  "  py3compile -p python3-zephmetadata\nfi\n")
file(WRITE ${pythonScripts}/prerm "#!/bin/sh\nset -e\nif command -v py3clean >/dev/null; then\n"
  "  py3clean -p python3-zephmetadata\nfi\n")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${pythonScripts}/postinst ${pythonScripts}/prerm)

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME zephmetadata-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_DESCRIPTION "typed, schema-driven access to XMP metadata - documentation
The guide, the reference of the known properties, the reasons of decisions
and example programs.")

# The licence and the record of changes lie where Debian's tools look for them, once for each package.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changes ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian)
file(WRITE ${changes} "zephmetadata (${PROJECT_VERSION}-1) unstable; urgency=medium\n\n"
  "  * Built from the sources; zephmetadata-doc holds what is new.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
find_program(gzip gzip REQUIRED)
execute_process(COMMAND ${gzip} -9nf ${changes} COMMAND_ERROR_IS_FATAL ANY)
file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
# Debian's machine-readable form: the text indented, empty lines as dots.
string(REGEX REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REGEX REPLACE "\n([^\n])" "\n \\1" licence "${licence}")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/copyright
  "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\nUpstream-Name: zephmetadata\n\n"
  "Files: *\nCopyright: 2026 the zephmetadata authors\nLicense: BSD-3-clause\n ${licence}")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/copyright ${changes}.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME} COMPONENT ${component})
endforeach()
include(CPack)
