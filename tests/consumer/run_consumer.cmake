# cmake -D build_tree=... -P run_consumer.cmake; see CMakeLists.txt beside this file for the variables.
file(REMOVE_RECURSE "${work}")
file(MAKE_DIRECTORY "${work}")

function(step text)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  message("${output}")
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${text} failed: ${result}")
  endif()
  set(step_output "${output}" PARENT_SCOPE)
endfunction()

set(arguments -G "${generator}" "-DCMAKE_PREFIX_PATH=${work}/installed" "-DCMAKE_BUILD_TYPE=${configuration}")
if(platform)
  list(APPEND arguments -A "${platform}")
endif()
if(toolchain)
  # The toolchain file looks for packages below its own root only; the installed one lies elsewhere.
  list(APPEND arguments "-DCMAKE_TOOLCHAIN_FILE=${toolchain}" "-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH")
endif()

step("Installing" ${CMAKE_COMMAND} --install "${build_tree}" --config "${configuration}" --prefix "${work}/installed")
step("Configuring the consumer" ${CMAKE_COMMAND} -S "${project}" -B "${work}/build" ${arguments})
step("Building the consumer" ${CMAKE_COMMAND} --build "${work}/build" --config "${configuration}")

# Windows finds DLLs beside the executable; the simulator stands in for the platform's cluster libraries.
file(GLOB binaries "${work}/installed/bin/*.dll" "${work}/installed/simulator/*.dll")
file(GLOB_RECURSE program "${work}/build/consumer.exe")
if(NOT program)
  message(FATAL_ERROR "no consumer.exe was built")
endif()
file(COPY ${binaries} ${program} DESTINATION "${work}/run")
file(COPY "${project}/cluster.json" DESTINATION "${work}/run")
set(ENV{CLUSSIM_FILE} "cluster.json")
execute_process(COMMAND ${run} "${work}/run/consumer.exe" WORKING_DIRECTORY "${work}/run"
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
message("consumer.exe: ${result}\n${output}${errors}")
if(NOT result EQUAL 0)
  message(FATAL_ERROR "consumer.exe failed: ${result}")
endif()
if(NOT output MATCHES "cluster CONSUMERCLUS\r?\nresource EVS1 Network Name\r?\nresource EVS1 IP Address\r?\n")
  message(FATAL_ERROR "consumer.exe printed something else than the cluster's name and resources")
endif()
