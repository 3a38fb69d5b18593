# The system's headers and the standard library's, which are most of what a source takes in, compiled once for many sources. A
# source includes what it needs all the same: clang-tidy, other compilers and the build for Visual Studio's ABI go without. So do
# releases: GCC forgets that such headers are the system's, and warns of what it inlines from them.
include_guard(GLOBAL)

set(clusutil_precompiled_headers
  <winsock2.h> <windows.h>
  <algorithm> <chrono> <filesystem> <fstream> <functional> <map> <memory> <mutex> <optional> <set> <sstream> <string>
  <string_view> <thread> <unordered_map> <vector>)

# clusutil_precompiled_set(<name> HEADERS <header...> LIBRARIES <target...>): those and more, for clusutil_use_precompiled.
function(clusutil_precompiled_set name)
  cmake_parse_arguments(arg "" "" "HEADERS;LIBRARIES" ${ARGN})
  if(NOT MINGW OR CMAKE_BUILD_TYPE STREQUAL "Release")
    return()
  endif()
  file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp" CONTENT "// Only headers.\n")
  add_library(${name} STATIC EXCLUDE_FROM_ALL "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  clusutil_target(${name} DESCRIPTION "precompiled headers")
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
  target_precompile_headers(${name} PRIVATE ${clusutil_precompiled_headers} ${arg_HEADERS})
endfunction()

# clusutil_use_precompiled(<target> <set>): for a target with the settings of clusutil_target.
function(clusutil_use_precompiled target set)
  if(TARGET ${set})
    target_precompile_headers(${target} REUSE_FROM ${set})
  endif()
endfunction()
