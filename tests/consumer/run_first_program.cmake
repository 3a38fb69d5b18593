# cmake -D program=... -P run_first_program.cmake: runs examples/first-program.cpp on a simulated cluster; see CMakeLists.txt
# beside this file for the variables. Its settings lie under a registry key of their own.
set(key "SOFTWARE\\clusutil-first-program")
file(REMOVE_RECURSE "${work}")
file(GLOB libraries "${binaries}/*.dll")
file(COPY ${libraries} ${program} "${model}" DESTINATION "${work}")
file(WRITE "${work}/cfg_ProductRegistry.txt" "RegKeyProductCurrentVersion\t${key}\n")

foreach(value "IsCluster;REG_DWORD;1" "ClusterQuorumMode;REG_DWORD;1" "HomeDir;REG_SZ;C:\\Gate")
  list(GET value 0 name)
  list(GET value 1 type)
  list(GET value 2 data)
  execute_process(COMMAND ${run} reg add "HKLM\\${key}" /v ${name} /t ${type} /d "${data}" /f
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "reg add failed: ${result}\n${output}")
  endif()
endforeach()

get_filename_component(name "${program}" NAME)
get_filename_component(model_name "${model}" NAME)
set(ENV{CLUSSIM_FILE} "${model_name}")
execute_process(COMMAND ${run} "${work}/${name}" WORKING_DIRECTORY "${work}"
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
execute_process(COMMAND ${run} reg delete "HKLM\\${key}" /f OUTPUT_QUIET ERROR_QUIET)
message("${name}: ${result}\n${output}${errors}")
string(REPLACE "\r" "" output "${output}")
if(NOT result EQUAL 0 OR NOT output STREQUAL
   "EXVS-MAIL1 192.0.2.21 F:\\Zyntra Gate\\\nEXVS-MAIL2 192.0.2.22 G:\\Zyntra Gate\\\n")
  message(FATAL_ERROR "${name} did not print the two servers of this node")
endif()
