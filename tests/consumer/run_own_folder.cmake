# cmake -D program=... -D run=... -D work=... -P run_own_folder.cmake: see CMakeLists.txt beside this file.
file(REMOVE_RECURSE "${work}")
file(MAKE_DIRECTORY "${work}")
string(REPLACE "/" "\\" folder "Z:${work}/own")
foreach(expected 0 1) # the second time the folder is there, and whoever made it may have put something into it
  execute_process(COMMAND ${run} "${program}" "${folder}" RESULT_VARIABLE result)
  if(NOT result EQUAL expected)
    message(FATAL_ERROR "exit code ${result} instead of ${expected}")
  endif()
endforeach()
