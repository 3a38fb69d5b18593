# What every binary of this project has in common: warnings as errors, PE hardening, a VERSIONINFO resource, one output folder.
include_guard(GLOBAL)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

# clusutil_target(<target> DESCRIPTION <text> [STATIC_RUNTIME])
#   DESCRIPTION     the FileDescription shown by Explorer
#   STATIC_RUNTIME  link the C++ runtime into the binary: for drop-in binaries with a plain C interface
function(clusutil_target target)
  cmake_parse_arguments(arg "STATIC_RUNTIME" "DESCRIPTION" "" ${ARGN})
  if(NOT arg_DESCRIPTION)
    message(FATAL_ERROR "clusutil_target(${target}): DESCRIPTION is missing")
  endif()
  target_compile_features(${target} PRIVATE cxx_std_17)
  # DLLs are found at run time: one that was built again needs no new link of what uses it.
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS ON PREFIX "" LINK_DEPENDS_NO_SHARED ON)
  target_compile_definitions(${target} PRIVATE UNICODE _UNICODE NOMINMAX WINVER=0x0502 _WIN32_WINNT=0x0502)

  if(MSVC)
    # Functions with C linkage are not taken to be free of exceptions: /EHs without c.
    target_compile_options(${target} PRIVATE /W4 /WX /permissive- /utf-8 /guard:cf /EHs /EHc-)
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS _WINSOCK_DEPRECATED_NO_WARNINGS)
    target_link_options(${target} PRIVATE /DYNAMICBASE /NXCOMPAT /HIGHENTROPYVA /guard:cf)
  else()
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wundef -Wformat=2 -Werror
      -fstack-protector-strong -fvisibility=hidden
      # A release has line numbers for its symbols, and no trace of the folder it was built in.
      "$<$<CONFIG:Release>:-g1;-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>")
    # Sections lie in the file as in memory: Wine maps them then, where it would copy all, symbols too, at every start.
    target_link_options(${target} PRIVATE
      -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va -Wl,--no-insert-timestamp -Wl,--file-alignment=4096)
    target_link_libraries(${target} PRIVATE clusutil_stack_guard)
    if(arg_STATIC_RUNTIME)
      target_link_options(${target} PRIVATE -static)
    endif()
  endif()

  get_target_property(type ${target} TYPE)
  set(CLUSUTIL_RC_DESCRIPTION "${arg_DESCRIPTION}")
  if(type STREQUAL "EXECUTABLE")
    set(CLUSUTIL_RC_FILETYPE "VFT_APP")
    set(CLUSUTIL_RC_FILENAME "${target}.exe")
  else()
    set(CLUSUTIL_RC_FILETYPE "VFT_DLL")
    set(CLUSUTIL_RC_FILENAME "${target}.dll")
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" @ONLY)
  target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
endfunction()
