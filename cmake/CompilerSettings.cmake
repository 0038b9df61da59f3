# What every target of the project is compiled with, as one interface target.
add_library(zephmetadata_settings INTERFACE)
target_compile_options(zephmetadata_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${ZEPHMETADATA_WERROR}>:-Werror>)
if(ZEPHMETADATA_SANITIZE)
  target_compile_options(zephmetadata_settings INTERFACE
    -fsanitize=${ZEPHMETADATA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # With the checks of the sanitizers in between, g++ 12 takes the standard library's own variables for uninitialised.
    target_compile_options(zephmetadata_settings INTERFACE -Wno-maybe-uninitialized)
  endif()
  target_link_options(zephmetadata_settings INTERFACE -fsanitize=${ZEPHMETADATA_SANITIZE})
endif()

# Faster repeated builds where ccache is installed; never required. Without the named sloppiness it passes over
# everything that uses a precompiled header.
find_program(ZEPHMETADATA_CCACHE ccache)
mark_as_advanced(ZEPHMETADATA_CCACHE)
if(ZEPHMETADATA_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
    ${ZEPHMETADATA_CCACHE})
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT CMAKE_DISABLE_PRECOMPILE_HEADERS)
  # g++ 12 forgets that what comes from a precompiled header is the standard library's, and then warns of the inside of
  # std::string; the sanitizers look for the same faults.
  target_compile_options(zephmetadata_settings INTERFACE -fpch-preprocess
    -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow)
endif()

# zephmetadata_precompile(<target> <header>...): the headers of other projects that nearly every file of the target
# includes are read once. Each file includes what it needs all the same.
function(zephmetadata_precompile target)
  list(TRANSFORM ARGN REPLACE "^(.+)$" "<\\1>")
  target_precompile_headers(${target} PRIVATE ${ARGN}
    <algorithm> <functional> <map> <memory> <optional> <set> <sstream> <string> <string_view> <vector>
    <boost/range/any_range.hpp> <boost/smart_ptr/intrusive_ptr.hpp>)
endfunction()
