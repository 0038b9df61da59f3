# Runs edit_keywords on a copy of the photo: once to add, once more to find that nothing changes, then on a file that
# cannot be changed.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")
cmake_path(GET PHOTO FILENAME name)
file(COPY "${PHOTO}" DESTINATION "${FOLDER}")

set(ENV{ZEPHCORE_SYSTEM_DIR} "${FOLDER}/base")
set(ENV{ZEPHCORE_GLOBAL_PREF_DIR} "${FOLDER}/base")
set(ENV{ZEPHCORE_PREF_DIR} "${FOLDER}/base")

set(expected "harbour; boats; \"dawn; early\"; sea; low sun\n")
foreach(run IN ITEMS first second)
  execute_process(COMMAND "${PROGRAM}" "${FOLDER}/${name}" "low sun" OUTPUT_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
    message(FATAL_ERROR "The ${run} run ended with ${result} and printed:\n${output}instead of:\n${expected}")
  endif()
  file(SHA256 "${FOLDER}/${name}" ${run})
endforeach()
if(NOT first STREQUAL second)
  message(FATAL_ERROR "The second run changed the file although the keyword was there")
endif()

file(WRITE "${FOLDER}/no-photo.jpg" "text")
execute_process(COMMAND "${PROGRAM}" "${FOLDER}/no-photo.jpg" "low sun" ERROR_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 1 OR NOT output MATCHES "no metadata")
  message(FATAL_ERROR "A file that is no photo ended with ${result} and printed:\n${output}")
endif()
