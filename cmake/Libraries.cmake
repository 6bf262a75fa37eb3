# orli_objects(NAME SOURCE...): the object files of one room of the house.
#
# A thread's own data are at a fixed offset from its base. The other model makes them at the first
# use on a thread when the library was loaded late, and ends the process where that has no memory.
# The room for them is small: the libraries keep a few hundred bytes there.
function(orli_objects name)
  add_library(${name} OBJECT ${ARGN})
  target_compile_options(${name} PRIVATE -ftls-model=initial-exec)
endfunction()

# orli_shared_library(NAME [HEADERS file...] OBJECTS room... [LINKS library...] [NOT_INSTALLED]):
# libNAME.so, which exports the names of cmake/exports/NAME.txt and nothing else. Its headers are
# those of include/orli11.
function(orli_shared_library name)
  cmake_parse_arguments(ARG "NOT_INSTALLED" "" "HEADERS;OBJECTS;LINKS" ${ARGN})
  set(objects "")
  foreach(room IN LISTS ARG_OBJECTS)
    list(APPEND objects $<TARGET_OBJECTS:${room}>)
  endforeach()
  add_library(${name} SHARED ${objects})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS})
  target_include_directories(${name} INTERFACE
    ${CMAKE_SOURCE_DIR}/include ${CMAKE_SOURCE_DIR}/include/orli11)

  # The version script is made from the list, so that the list is the one home of the names.
  set(list_file ${CMAKE_SOURCE_DIR}/cmake/exports/${name}.txt)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list_file})
  file(STRINGS ${list_file} exported REGEX "^[A-Za-z]")
  list(JOIN exported ";\n    " globals)
  set(script ${CMAKE_BINARY_DIR}/${name}.map)
  string(MAKE_C_IDENTIFIER ${name} node)
  file(CONFIGURE OUTPUT ${script} CONTENT "@node@ {\n  global:\n    @globals@;\n  local:\n    *;\n};\n" @ONLY)
  target_link_options(${name} PRIVATE -Wl,--version-script=${script} -Wl,-z,now -Wl,-z,relro)
  # What threads have registered for their end, and hosts for their callbacks, must not go away.
  target_link_options(${name} PRIVATE -Wl,-z,nodelete)
  if(NOT ORLI_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${script})

  if(ARG_NOT_INSTALLED)
    return()
  endif()
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  list(TRANSFORM ARG_HEADERS PREPEND ${CMAKE_SOURCE_DIR}/include/orli11/)
  install(FILES ${ARG_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orli11)
endfunction()
