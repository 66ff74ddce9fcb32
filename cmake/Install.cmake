# The installed tree: the library, the program beside it, the headers, and what find_package and pkg-config need. It may be moved
# as a whole.

include(CMakePackageConfigHelpers)

install(TARGETS utdata EXPORT utdataTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/utdata/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/utdata FILES_MATCHING PATTERN "*.h")
install(DIRECTORY interfaces/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/utdata/interfaces FILES_MATCHING PATTERN "*.h")

if(TARGET utdata_program)
  file(RELATIVE_PATH libraryFromProgram ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(utdata_program PROPERTIES INSTALL_RPATH "$ORIGIN/${libraryFromProgram}")
  install(TARGETS utdata_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/utdata)
configure_package_config_file(cmake/utdataConfig.cmake.in ${PROJECT_BINARY_DIR}/utdataConfig.cmake
  INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/utdataConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(EXPORT utdataTargets NAMESPACE utdata:: DESTINATION ${packageDir})
install(FILES ${PROJECT_BINARY_DIR}/utdataConfig.cmake ${PROJECT_BINARY_DIR}/utdataConfigVersion.cmake
  DESTINATION ${packageDir})

file(RELATIVE_PATH prefixFromPc ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/utdata.pc.in ${PROJECT_BINARY_DIR}/utdata.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/utdata.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
