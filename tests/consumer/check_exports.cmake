# What the library exports is what is meant. Fails for a symbol that
#  - is not in LIST, or is there and no longer exported: the list is what a reader of a change sees of the interface.
#    `cmake --build DIR --target update_exports` writes it anew (-DUPDATE=ON, which checks nothing),
#  - no public header names: nobody could use it,
#  - none of the programs imports: an export that nobody uses is an interface that nobody tried.
#
# Left out are weak symbols (type information, tables of virtual functions, inline functions), destructors, which every
# use of a class brings with it, and what a host cannot name: private functions, which the library's own reach.
cmake_minimum_required(VERSION 3.25)

set(unnameable
  "zephmetadata::AggregateProvider::RememberTree("
  "zephmetadata::AggregateProvider::WriteChanges("
  "zephmetadata::AggregateProvider::WriteMerged("
  "zephmetadata::DisjointSchemaProxyProvider::Copies::"
  "zephmetadata::DisjointSchemaProxyProvider::CopyRoutes("
  "zephmetadata::DisjointSchemaProxyProvider::TakeRoutesOut("
  "zephmetadata::DisjointSchemaProxyProvider::WriteBase("
  "zephmetadata::DisjointSchemaProxyProvider::WriteChanges("
  "zephmetadata::MetaDataProvider::CallWriteCallbacks("
  "zephmetadata::MetaDataProvider::TakeReport("
  "zephmetadata::MetaDataProvider::WriteBack("
  "zephmetadata::ProxyProviderImpl::Reaches("
  "zephmetadata::FileProvider::WriteChanges("
  "zephmetadata::MediaProvider::WriteChanges("
  "zephmetadata::SidecarProvider::WriteBuffer("
  "zephmetadata::SidecarProvider::WriteChanges("
  "zephmetadata::SourceProvider::WriteChanges(")

# symbols_of(<result> <file> <types>): names of the dynamic symbols whose type letter is among the given.
function(symbols_of result file types)
  execute_process(COMMAND ${NM} -DC --format=posix "${file}" OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
  # Semicolons and brackets would make and break list items.
  string(REPLACE ";" "," table "${table}")
  string(REPLACE "[" "{" table "${table}")
  string(REPLACE "]" "}" table "${table}")
  string(REPLACE "\n" ";" lines "${table}")
  set(names "")
  foreach(line IN LISTS lines)
    if(line MATCHES "^(zephmetadata::.*|zephcore::.*) [${types}]( |$)")
      list(APPEND names "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES names)
  set(${result} "${names}" PARENT_SCOPE)
endfunction()

symbols_of(exported "${LIBRARY}" "TDBR")
list(LENGTH exported count)
if(count LESS 100)
  message(FATAL_ERROR "Only ${count} symbols were found in ${LIBRARY}")
endif()

# Without the symbols that depend on what a compiler inlines.
set(named "${exported}")
list(FILTER named EXCLUDE REGEX "::~|^zephmetadata::[A-Za-z]+::[A-Z][A-Za-z]*::|@")
list(SORT named)
list(JOIN named "\n" text)
if(UPDATE)
  file(WRITE "${LIST}" "${text}\n")
  return()
endif()
file(READ "${LIST}" listed)
if(NOT listed STREQUAL "${text}\n")
  string(REGEX REPLACE "\n$" "" listed "${listed}")
  string(REPLACE "\n" ";" listed "${listed}")
  set(added "${named}")
  list(REMOVE_ITEM added ${listed})
  list(REMOVE_ITEM listed ${named})
  string(REPLACE ";" "\n  " added "${added}")
  string(REPLACE ";" "\n  " listed "${listed}")
  message(FATAL_ERROR "The exports are not those of ${LIST}; the target update_exports writes it.\n"
    "Exported, not listed:\n  ${added}\nListed, not exported:\n  ${listed}")
endif()

file(GLOB_RECURSE headers "${INCLUDE}/*.h")
set(declared "")
foreach(header IN LISTS headers)
  file(READ "${header}" text)
  string(APPEND declared "${text}")
endforeach()
foreach(name IN LISTS named)
  string(REGEX REPLACE "[{(].*" "" bare "${name}")
  string(REGEX REPLACE ".*::" "" bare "${bare}")
  string(FIND "${declared}" "${bare}" position)
  if(position EQUAL -1)
    message(FATAL_ERROR "Exported, and in no header: ${name}")
  endif()
endforeach()

set(imported "")
foreach(host IN LISTS HOSTS)
  # Variables of the library that a program uses are copied into it and stand there as its own.
  symbols_of(names "${host}" "UBDRVW")
  list(APPEND imported ${names})
endforeach()

set(unused "")
foreach(name IN LISTS exported)
  if(name IN_LIST imported OR name MATCHES "::~")
    continue()
  endif()
  set(named TRUE)
  foreach(prefix IN LISTS unnameable)
    string(FIND "${name}" "${prefix}" position)
    if(position EQUAL 0)
      set(named FALSE)
    endif()
  endforeach()
  if(named)
    string(APPEND unused "\n  ${name}")
  endif()
endforeach()
if(unused)
  message(FATAL_ERROR "Exported, and used by none of ${HOSTS}:${unused}")
endif()
message(STATUS "${count} exported symbols have a host")
