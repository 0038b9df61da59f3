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

# Faster repeated builds where ccache is installed; never required.
find_program(ZEPHMETADATA_CCACHE ccache)
mark_as_advanced(ZEPHMETADATA_CCACHE)
if(ZEPHMETADATA_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZEPHMETADATA_CCACHE})
endif()
