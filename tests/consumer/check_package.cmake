# Installs the build tree into a folder of its own and uses what is there: the command line, each header alone, the
# examples with pkg-config and g++ and clang++, and a project that is configured, built and run.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${FOLDER}")
set(prefix "${FOLDER}/prefix")

# run(<what> <command>...): stops the test when the command fails; its output is left in `output`.
function(run what)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

unset(ENV{DESTDIR})
run("Installing" ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
# Moved, as packages are: nothing in it may point to where it was.
file(RENAME "${prefix}" "${FOLDER}/moved")
set(prefix "${FOLDER}/moved")

# A build without the command line has nothing of it to install.
if(TOOLS)
  run("The installed command line" "${prefix}/bin/zephmeta" get "${PHOTO}" dc:title)
  if(NOT output STREQUAL "Harbour at dawn\n")
    message(FATAL_ERROR "The installed command line printed ${output}")
  endif()
  foreach(page IN ITEMS man/man1/zephmeta.1.gz bash-completion/completions/zephmeta zsh/site-functions/_zephmeta
      fish/vendor_completions.d/zephmeta.fish)
    if(NOT EXISTS "${prefix}/share/${page}")
      message(FATAL_ERROR "${page} was not installed")
    endif()
  endforeach()
endif()

find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
run("pkg-config" ${PKG_CONFIG} --cflags zephmetadata)
separate_arguments(includes UNIX_COMMAND "${output}")
run("pkg-config" ${PKG_CONFIG} --libs zephmetadata)
separate_arguments(libraries UNIX_COMMAND "${output}")
run("pkg-config" ${PKG_CONFIG} --modversion zephmetadata)
string(STRIP "${output}" output)
if(NOT output STREQUAL VERSION)
  message(FATAL_ERROR "pkg-config tells version ${output}, not ${VERSION}")
endif()
separate_arguments(flags UNIX_COMMAND "${FLAGS}")

file(GLOB_RECURSE headers RELATIVE "${prefix}/include" "${prefix}/include/*.h")
list(LENGTH headers count)
if(count LESS 10)
  message(FATAL_ERROR "Only ${count} headers are installed: ${headers}")
endif()
foreach(header IN LISTS headers)
  # Twice: a header without an include guard fails.
  file(WRITE "${FOLDER}/alone.cpp" "#include <${header}>\n#include <${header}>\n")
  run("${header} alone" ${CXX} -std=c++20 -Wall -Wextra -Wpedantic -Werror -fsyntax-only ${includes}
    "${FOLDER}/alone.cpp")
endforeach()

# The examples, as hosts that know only pkg-config. All are run where they are built; here one is enough.
find_program(CLANG clang++)
if(NOT CLANG)
  message(STATUS "There is no clang++, so it was not tried with that")
endif()
set(warnings -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Werror)
foreach(example IN LISTS EXAMPLES)
  foreach(compiler IN ITEMS "${CXX}" "${CLANG}")
    if(compiler)
      run("${example} with ${compiler}" ${compiler} ${warnings} -fsyntax-only ${includes} "${SOURCES}/${example}.cpp")
    endif()
  endforeach()
endforeach()
run("Linking with pkg-config" ${CXX} ${warnings} ${flags} ${includes} "${SOURCES}/photo_desk.cpp" -o "${FOLDER}/linked"
  ${libraries} "-Wl,-rpath,${prefix}/${LIBDIR}")
# run_desk(<program>): runs the example that uses most of the interface, on a copy, which it leaves with an edit.
function(run_desk program)
  file(COPY_FILE "${PHOTO}" "${FOLDER}/photo.jpg")
  execute_process(COMMAND "${program}" "${SOURCES}/packages/tide-table" "${FOLDER}/photo.jpg"
    OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE result)
  # It also asks for a rating that there is not.
  if(NOT result EQUAL 1 OR NOT output MATCHES "Title: From the desk" OR NOT errors MATCHES "more than 5\n$")
    message(FATAL_ERROR "${program} ended with ${result}:\n${output}${errors}")
  endif()
endfunction()
run_desk("${FOLDER}/linked")

run("Configuring the consumer" ${CMAKE_COMMAND} -S ${PROJECT} -B "${FOLDER}/build" -G ${GENERATOR}
  -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${FLAGS}" -DCMAKE_PREFIX_PATH=${prefix} -DWANTED_VERSION=${VERSION}
  -DEXAMPLES=${SOURCES})
run("Building the consumer" ${CMAKE_COMMAND} --build "${FOLDER}/build" --parallel 1)
run_desk("${FOLDER}/build/desk")
run("The consumer" "${FOLDER}/build/consumer" ${PHOTO} ${VERSION})
message(STATUS "${output}")
