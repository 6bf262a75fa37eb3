# The compile options of every target of the project, and how its libraries are built.

set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# orli_compile(TARGET...): the language, the warnings, the sanitizers, and where headers are: the
# public ones, and the others as "folder/file.h".
function(orli_compile)
  foreach(name IN LISTS ARGN)
    target_compile_features(${name} PRIVATE c_std_11 cxx_std_20)
    set_target_properties(${name} PROPERTIES C_EXTENSIONS OFF CXX_EXTENSIONS OFF)
    target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
      $<$<BOOL:${ORLI_WERROR}>:-Werror>)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include
      ${PROJECT_SOURCE_DIR}/include/orli11)
    if(ORLI_SANITIZE)
      target_compile_options(${name} PRIVATE -fsanitize=${ORLI_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
      target_link_options(${name} PRIVATE -fsanitize=${ORLI_SANITIZE})
    endif()
  endforeach()
endfunction()

# orli_precompile(TARGET header...): headers that most sources of the target include. A compiler
# cache works better without.
function(orli_precompile name)
  if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    target_precompile_headers(${name} PRIVATE ${ARGN})
  endif()
endfunction()

# orli_program(NAME SOURCE...): an executable.
function(orli_program name)
  add_executable(${name} ${ARGN})
  orli_compile(${name})
endfunction()

# orli_objects(NAME SOURCE...): the object files of one folder.
#
# A thread's own data are at a fixed offset from its base. The other model allocates them at the
# first use on a thread when the library was loaded late, and ends the process when out of memory.
# The space for them is small: the libraries use a few hundred bytes of it.
#
# Calls of an exported routine in the same file are not interposable and may be inlined: a program
# cannot replace it. Names that are not exported are hidden in any case.
#
# Copies of neighbouring words are not joined in a vector register: a load of both, right after they
# were stored one by one, waits for the stores. Loops are still vectorised.
function(orli_objects name)
  add_library(${name} OBJECT ${ARGN})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${name} PRIVATE -ftls-model=initial-exec)
  if(NOT ORLI_SANITIZE)
    target_compile_options(${name} PRIVATE -fno-semantic-interposition -fno-tree-slp-vectorize)
  endif()
  orli_compile(${name})
endfunction()

# The version script is generated from the list of names, the only copy of it.
function(orli_version_script name)
  set(list_file ${PROJECT_SOURCE_DIR}/cmake/exports/${name}.txt)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list_file})
  file(STRINGS ${list_file} exported REGEX "^[A-Za-z]")
  list(JOIN exported ";\n    " globals)
  set(script ${PROJECT_BINARY_DIR}/${name}.map)
  string(MAKE_C_IDENTIFIER ${name}_${PROJECT_VERSION_MAJOR} node)
  string(TOUPPER ${node} node)
  file(CONFIGURE OUTPUT ${script} CONTENT "@node@ {\n  global:\n    @globals@;\n  local:\n    *;\n};\n" @ONLY)
  target_link_options(${name} PRIVATE -Wl,--version-script=${script} -Wl,-z,now -Wl,-z,relro)
  # The library must not be unloaded: threads have registered destructors, and hosts callbacks.
  target_link_options(${name} PRIVATE -Wl,-z,nodelete)
  if(NOT ORLI_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${script})
endfunction()

# orli_library(NAME [EXPORT name] [HEADERS file...] OBJECTS folder... [LINKS PUBLIC|PRIVATE library...]
#   [COMPONENT name]): libNAME, which exports the names of cmake/exports/NAME.txt and nothing else,
# installed with these headers of include/orli11 unless COMPONENT is NONE; for other projects the
# target ORLI11::EXPORT.
function(orli_library name)
  cmake_parse_arguments(ARG "" "COMPONENT;EXPORT" "HEADERS;OBJECTS;LINKS" ${ARGN})
  add_library(${name})
  foreach(folder IN LISTS ARG_OBJECTS)
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:${folder}>)
  endforeach()
  if(ARG_LINKS)
    target_link_libraries(${name} ${ARG_LINKS})
  endif()
  orli_compile(${name})
  set(include_dir ${CMAKE_INSTALL_INCLUDEDIR})
  target_include_directories(${name} INTERFACE
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include;${PROJECT_SOURCE_DIR}/include/orli11>"
    "$<INSTALL_INTERFACE:${include_dir};${include_dir}/orli11>")
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX INSTALL_RPATH "$ORIGIN"
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(BUILD_SHARED_LIBS)
    orli_version_script(${name})
  else()
    # C programs link them too.
    target_link_libraries(${name} PRIVATE stdc++ m)
  endif()
  set(export "")
  if(ARG_EXPORT)
    add_library(ORLI11::${ARG_EXPORT} ALIAS ${name})
    set_target_properties(${name} PROPERTIES EXPORT_NAME ${ARG_EXPORT})
    set(export EXPORT ORLI11)
  endif()
  if(ARG_COMPONENT STREQUAL NONE OR NOT ORLI_INSTALL)
    return()
  endif()
  if(ARG_COMPONENT)
    set(namelink NAMELINK_SKIP) # loaded, never linked
  else()
    set(ARG_COMPONENT libraries)
    set(namelink NAMELINK_COMPONENT development)
  endif()
  install(TARGETS ${name} ${export}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${ARG_COMPONENT} ${namelink}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  list(TRANSFORM ARG_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/include/orli11/)
  install(FILES ${ARG_HEADERS} DESTINATION ${include_dir}/orli11 COMPONENT development)
endfunction()
