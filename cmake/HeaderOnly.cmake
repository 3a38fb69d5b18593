# Header-only helpers of tools and simulators: nlohmann/json and CLI11. The library itself uses none.
include_guard(GLOBAL)

# clusutil_header_only(<target> <folder> <header>): an interface target for the headers in <folder>.
function(clusutil_header_only target folder header)
  if(TARGET ${target})
    return()
  endif()
  find_path(CLUSUTIL_${folder}_ROOT "${folder}/${header}" PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(include_dir "${CLUSUTIL_${folder}_ROOT}")
  if(CMAKE_CROSSCOMPILING)
    # The folder beside it holds the build system's own headers, which the cross compiler must not see.
    set(include_dir "${CMAKE_BINARY_DIR}/headers/${folder}")
    file(MAKE_DIRECTORY "${include_dir}")
    file(CREATE_LINK "${CLUSUTIL_${folder}_ROOT}/${folder}" "${include_dir}/${folder}" SYMBOLIC)
  endif()
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE "${include_dir}")
endfunction()

clusutil_header_only(clusutil_json nlohmann json.hpp)
clusutil_header_only(clusutil_cli CLI CLI.hpp)
