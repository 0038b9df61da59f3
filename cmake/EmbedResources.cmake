# Builds files into a library as static bytes. Included, it defines the function; run as a script (cmake -P) by the
# build, it writes the bytes of -DINPUT=file as a C++ initialiser to -DOUTPUT=file.
if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  file(READ "${INPUT}" bytes HEX)
  if(bytes STREQUAL "")
    message(FATAL_ERROR "${INPUT} is empty")
  endif()
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  # Lines of 24 bytes: a single line of megabytes is slow to compile and to look at.
  set(byte "0x..,")
  string(REPEAT "${byte}" 24 line)
  string(REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")
  file(WRITE "${OUTPUT}" "${bytes}\n")
  return()
endif()

set(ZEPHMETADATA_EMBED_SCRIPT "${CMAKE_CURRENT_LIST_FILE}")

function(zephmetadata_embed_file input output)
  cmake_path(GET input FILENAME name)
  add_custom_command(OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DINPUT=${input}" "-DOUTPUT=${output}" -P "${ZEPHMETADATA_EMBED_SCRIPT}"
    DEPENDS "${input}" "${ZEPHMETADATA_EMBED_SCRIPT}"
    COMMENT "Embedding ${name}"
    VERBATIM)
endfunction()

# zephmetadata_embed_resources(<target> COMPILER <program> FILES <file>... TREE <folder> <file>...): builds the files into
# the target. A resource's name is the file's name without extension, for the files of the tree with the way from its
# folder to them; its type is the extension. XML documents are kept deflated, and are there a second time, as the
# compiler's output, of the type "events". Once for each target.
function(zephmetadata_embed_resources target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "COMPILER" "FILES;TREE")
  list(POP_FRONT ARG_TREE tree)
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/resources")
  set(names "")
  foreach(file IN LISTS ARG_FILES ARG_TREE)
    if(file IN_LIST ARG_TREE)
      cmake_path(RELATIVE_PATH file BASE_DIRECTORY "${tree}" OUTPUT_VARIABLE name)
      cmake_path(GET name PARENT_PATH parent)
      file(MAKE_DIRECTORY "${folder}/${parent}")
    else()
      cmake_path(GET file FILENAME name)
    endif()
    if(name IN_LIST names)
      message(FATAL_ERROR "Two resources are named ${name}")
    endif()
    if(NOT name MATCHES "^[-A-Za-z0-9_./]+$")
      message(FATAL_ERROR "The resource name ${name} has characters beyond letters, digits and -_./")
    endif()
    list(APPEND names "${name}")
    set(embedded "${file}")
    if(name MATCHES "[.]xml$")
      string(REGEX REPLACE "[.]xml$" ".events" compiled "${name}")
      list(APPEND names "${compiled}")
      add_custom_command(OUTPUT "${folder}/${compiled}" "${folder}/${name}.z"
        COMMAND ${ARG_COMPILER} "${file}" "${folder}/${compiled}"
        COMMAND ${ARG_COMPILER} --deflate "${file}" "${folder}/${name}.z"
        DEPENDS "${file}" ${ARG_COMPILER}
        COMMENT "Compiling ${name}"
        VERBATIM)
      zephmetadata_embed_file("${folder}/${compiled}" "${folder}/${compiled}.inc")
      set(embedded "${folder}/${name}.z")
    endif()
    zephmetadata_embed_file("${embedded}" "${folder}/${name}.inc")
  endforeach()
  list(SORT names COMPARE STRING CASE SENSITIVE)

  set(index 0)
  set(arrays "")
  set(rows "")
  set(outputs "")
  foreach(name IN LISTS names)
    string(APPEND arrays "constexpr unsigned char kBytes${index}[] = {\n#include \"${name}.inc\"\n};\n")
    string(REGEX MATCH "^(.+)[.]([^.]+)$" match "${name}")
    set(isDeflated false)
    if(CMAKE_MATCH_2 STREQUAL "xml")
      set(isDeflated true)
    endif()
    string(APPEND rows "    {\"${CMAKE_MATCH_1}\", \"${CMAKE_MATCH_2}\", kBytes${index}, ${isDeflated}},\n")
    list(APPEND outputs "${folder}/${name}.inc")
    math(EXPR index "${index} + 1")
  endforeach()
  set(table "${folder}/resource_table.cpp")
  file(CONFIGURE OUTPUT "${table}" @ONLY CONTENT [[
#include "platform/resource_table.h"

#include <array>

namespace zephcore {

namespace {

@arrays@
constexpr std::array<EmbeddedResource, @index@> kResources{{
@rows@}};

}  // namespace

std::span<const EmbeddedResource> EmbeddedResources() { return kResources; }

}  // namespace zephcore
]])
  target_sources(${target} PRIVATE "${table}")
  # A target of its own, as custom commands do not reach a library of another folder.
  add_custom_target(${target}_resources DEPENDS ${outputs})
  add_dependencies(${target} ${target}_resources)
endfunction()
