# Run by cpack when the packages are made. CPack has packages of libraries call ldconfig in scripts; Debian wants a trigger
# (Debian Policy 8.1.1).
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "/libzephmetadata[0-9.]+_[^/]*[.]deb$")
    continue()
  endif()
  set(folder "${package}.folder")
  file(REMOVE_RECURSE "${folder}")
  execute_process(COMMAND dpkg-deb -R "${package}" "${folder}" COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE "${folder}/DEBIAN/postinst" "${folder}/DEBIAN/postrm")
  file(WRITE "${folder}/DEBIAN/triggers" "activate-noawait ldconfig\n")
  file(CHMOD "${folder}/DEBIAN/triggers" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  execute_process(COMMAND dpkg-deb --root-owner-group -b "${folder}" "${package}" OUTPUT_QUIET
    COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE "${folder}")
endforeach()
