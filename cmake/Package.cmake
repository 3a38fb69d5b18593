# What an installation holds: bin/ (DLLs and tools), lib/ and include/ with the CMake package, simulator/ (drop-in DLLs
# and tools, kept apart so that no program uses them by accident), share/ (documents, examples, the manual page).
include(CMakePackageConfigHelpers)

set(clusutil_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/clusutil")

install(EXPORT clusutilTargets NAMESPACE clusutil:: DESTINATION ${clusutil_package_dir})
configure_package_config_file(cmake/clusutilConfig.cmake.in "${PROJECT_BINARY_DIR}/clusutilConfig.cmake"
  INSTALL_DESTINATION ${clusutil_package_dir}
  PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/clusutilConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/clusutilConfig.cmake" "${PROJECT_BINARY_DIR}/clusutilConfigVersion.cmake"
  DESTINATION ${clusutil_package_dir})

if(TARGET clusctl)
  install(TARGETS clusctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET clusrecord)
  install(TARGETS clusrecord RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES tools/recording/clusrecord.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()
foreach(part clussim_clusapi clussim_resutils vcssim_haagent vcssim_hacf vcssim_haclus vcssim_haconf vcssim_hagrp
    vcssim_hares vcssim_hastatus vcssim_hasys vcssim_vcsencrypt vcssim_vcssim)
  if(TARGET ${part})
    install(TARGETS ${part} RUNTIME DESTINATION simulator ARCHIVE DESTINATION simulator)
  endif()
endforeach()
if(CLUSUTIL_BUILD_SIMULATORS)
  install(FILES simulator/cluster/ClusSimControl.h DESTINATION simulator)
endif()

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/clusutil)
install(FILES docs/clusctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DATADIR}/clusutil)
