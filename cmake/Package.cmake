# What an installed copy needs besides its files: packages for CMake and pkg-config that work
# wherever its folder is moved, and Debian packages.
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ORLI11)
install(EXPORT ORLI11 NAMESPACE ORLI11:: FILE ORLI11Targets.cmake DESTINATION ${config_dir}
  COMPONENT development)
configure_package_config_file(cmake/ORLI11Config.cmake.in ${PROJECT_BINARY_DIR}/ORLI11Config.cmake
  INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ORLI11ConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ORLI11Config.cmake ${PROJECT_BINARY_DIR}/ORLI11ConfigVersion.cmake
  DESTINATION ${config_dir} COMPONENT development)

# The pkg-config file finds the folder relative to itself, unless an absolute path is given.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(ORLI_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE ${package_dir})
  file(RELATIVE_PATH up /${package_dir} /)
  string(REGEX REPLACE "/$" "" up "${up}")
  set(ORLI_PC_PREFIX "\${pcfiledir}/${up}")
endif()
foreach(dir LIBDIR INCLUDEDIR)
  set(ORLI_PC_${dir} ${CMAKE_INSTALL_${dir}})
  if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_${dir}})
    set(ORLI_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
# Static libraries need the C++ runtime.
set(runtime "-lstdc++ -lm")
set(ORLI_PC_LIBS "")
set(ORLI_PC_LIBS_PRIVATE ${runtime})
if(NOT BUILD_SHARED_LIBS)
  set(ORLI_PC_LIBS " ${runtime}")
endif()
configure_file(cmake/orli11.pc.in ${PROJECT_BINARY_DIR}/orli11.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orli11.pc DESTINATION ${package_dir} COMPONENT development)

if(PROJECT_IS_TOP_LEVEL)
  include(cmake/Debian.cmake)
endif()
