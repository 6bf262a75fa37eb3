# What an installed copy needs beyond its files: libraries that find each other wherever the folder
# is put, and a pkg-config file that finds them by its own place.
set_target_properties(ORLI11 WRENI11 PAVNI11 PROPERTIES INSTALL_RPATH "$ORIGIN")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH ORLI_PC_UP /${package_dir} /)
string(REGEX REPLACE "/$" "" ORLI_PC_UP "${ORLI_PC_UP}")
configure_file(cmake/orli11.pc.in ${CMAKE_BINARY_DIR}/orli11.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/orli11.pc DESTINATION ${package_dir})
