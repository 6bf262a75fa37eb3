# Changes files as Debian requires before they are packaged.
file(GLOB_RECURSE files ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(file IN LISTS files)
  if(file MATCHES "/man/man[0-9]/")
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
  elseif(NOT IS_SYMLINK ${file})
    file(READ ${file} magic LIMIT 4 HEX)
    if(magic STREQUAL 7f454c46) # ELF: the system looks for libraries where packages put them
      file(RPATH_REMOVE FILE ${file})
    endif()
  endif()
endforeach()
