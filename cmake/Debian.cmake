# Debian packages, one for each component, in build/release/packages:
#   cpack --config build/release/CPackConfig.cmake
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orli11)
set(CPACK_PACKAGE_CONTACT "${PROJECT_NAME} <maintainers@orli11.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_files.cmake)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The packages of the system that a program or library needs are read from the file itself.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# orli_package(COMPONENT NAME SECTION DESCRIPTION [DEPENDS relation] [RECOMMENDS relation]): the
# package of a component. Debian's names are in lower case.
macro(orli_package component name section description)
  cmake_parse_arguments(ARG "" "DEPENDS;RECOMMENDS" "" ${ARGN})
  string(TOUPPER CPACK_DEBIAN_${component} package)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(${package}_PACKAGE_NAME ${name})
  set(${package}_PACKAGE_SECTION ${section})
  set(${package}_DESCRIPTION ${description})
  set(${package}_PACKAGE_DEPENDS "${ARG_DEPENDS}")
  set(${package}_PACKAGE_RECOMMENDS "${ARG_RECOMMENDS}")
endmacro()

set(major ${PROJECT_VERSION_MAJOR})
set(same "(= ${PROJECT_VERSION})")
set(CPACK_COMPONENTS_ALL "")
orli_package(libraries liborli11-${major} libs
  "The engine, its tools and its calendar, for programs that use them."
  RECOMMENDS "liborli11-qt-${major} ${same}")
orli_package(development liborli11-dev libdevel
  "Headers, and what CMake and pkg-config find the libraries by, for those who write such programs."
  DEPENDS "liborli11-${major} ${same}")
if(TARGET orli)
  orli_package(program orli utils "The program orli, which computes formulas over CSV files."
    DEPENDS "liborli11-${major} ${same}")
endif()
if(TARGET ORLI11-qt)
  orli_package(qt liborli11-qt-${major} libs
    "The windows of the formula editor, which the engine loads when a program opens it."
    DEPENDS "liborli11-${major} ${same}")
endif()
if(BUILD_SHARED_LIBS)
  orli_package(python python3-orli11 python "The engine for programs in Python."
    DEPENDS "liborli11-${major} ${same}, python3-cffi" RECOMMENDS "python3-numpy, python3-pandas")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
endif()
include(CPack)
