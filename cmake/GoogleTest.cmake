# GoogleTest from Debian's sources where they are, so that it is built like the tests; another system's own otherwise.
include_guard(GLOBAL)
include(GoogleTest)

if(EXISTS /usr/src/googletest/CMakeLists.txt)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
  foreach(library gtest gtest_main gmock)
    if(NOT TARGET GTest::${library})
      add_library(GTest::${library} ALIAS ${library})
    endif()
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()

# clusutil_tests_of(<group> LISTING <file> [SOURCES <file...>] [LABELS <label...>]): notes for ./dev test what the tests
# <group>/... come from, so that it can build target <group> alone: the file that registers them with ctest, and for a test
# program the sources whose change makes that file out of date.
function(clusutil_tests_of group)
  cmake_parse_arguments(arg "" "LISTING" "SOURCES;LABELS" ${ARGN})
  set(sources "")
  foreach(source IN LISTS arg_SOURCES)
    get_filename_component(source "${source}" ABSOLUTE)
    string(APPEND sources "source ${source}\n")
  endforeach()
  set(program "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${group}${CMAKE_EXECUTABLE_SUFFIX}")
  file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/tests/groups/${group}"
    CONTENT "listing ${arg_LISTING}\nlabels ${arg_LABELS}\nprogram ${program}\n${sources}" @ONLY)
endfunction()

# clusutil_discover_tests(<program> SOURCES <file...> [LABELS <label...>]): registers the tests of a program as
# <program>/<Suite>.<Name>, read from it when ctest starts.
function(clusutil_discover_tests name)
  cmake_parse_arguments(arg "" "" "SOURCES;LABELS" ${ARGN})
  gtest_discover_tests(${name}
    TEST_PREFIX "${name}/"
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 120
    WORKING_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}"
    PROPERTIES LABELS "${arg_LABELS}" TIMEOUT 120)
  clusutil_tests_of(${name} LISTING "${CMAKE_CURRENT_BINARY_DIR}/${name}[1]_tests.cmake"
    SOURCES ${arg_SOURCES} LABELS ${arg_LABELS})

  # ctest runs every program it includes to learn its tests: where ./dev built some of them, it names them.
  get_property(includes DIRECTORY PROPERTY TEST_INCLUDE_FILES)
  list(POP_BACK includes discovery)
  set(choice "${CMAKE_CURRENT_BINARY_DIR}/${name}_if_chosen.cmake")
  file(CONFIGURE OUTPUT "${choice}" CONTENT [[
if(NOT DEFINED ENV{CLUSUTIL_TEST_GROUPS} OR " $ENV{CLUSUTIL_TEST_GROUPS} " MATCHES " @name@ ")
  include("@discovery@")
endif()
]] @ONLY)
  set_property(DIRECTORY PROPERTY TEST_INCLUDE_FILES ${includes} "${choice}")
endfunction()
