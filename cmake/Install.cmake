# The installed tree: the library, the program beside it, the headers, and what find_package and
# pkg-config need. It may be moved as a whole.

include(CMakePackageConfigHelpers)

install(TARGETS utdata EXPORT utdataTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
set(headerDir ${CMAKE_INSTALL_INCLUDEDIR}/utdata)
install(DIRECTORY include/utdata/ DESTINATION ${headerDir} COMPONENT development
  FILES_MATCHING PATTERN "*.h")
install(DIRECTORY interfaces/ DESTINATION ${headerDir}/interfaces COMPONENT development
  FILES_MATCHING PATTERN "*.h")

if(TARGET utdata_program)
  file(RELATIVE_PATH libraryFromProgram ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(utdata_program PROPERTIES INSTALL_RPATH "$ORIGIN/${libraryFromProgram}")
  install(TARGETS utdata_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
endif()

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/utdata)
configure_package_config_file(cmake/utdataConfig.cmake.in ${PROJECT_BINARY_DIR}/utdataConfig.cmake
  INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/utdataConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(EXPORT utdataTargets NAMESPACE utdata:: DESTINATION ${packageDir} COMPONENT development)
install(FILES
  ${PROJECT_BINARY_DIR}/utdataConfig.cmake ${PROJECT_BINARY_DIR}/utdataConfigVersion.cmake
  DESTINATION ${packageDir} COMPONENT development)

file(RELATIVE_PATH prefixFromPc ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/utdata.pc.in ${PROJECT_BINARY_DIR}/utdata.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/utdata.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The manual page and the shell's completion are printed by the program itself.
if(TARGET utdata_program AND NOT CMAKE_CROSSCOMPILING)
  set(manualPage ${PROJECT_BINARY_DIR}/share/utdata.1)
  set(completion ${PROJECT_BINARY_DIR}/share/utdata)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/share)
  add_custom_command(OUTPUT ${manualPage} ${completion}
    COMMAND utdata_program manual > ${manualPage}
    COMMAND utdata_program completion bash > ${completion}
    DEPENDS utdata_program
    COMMENT "Printing the manual page and the completion"
    VERBATIM)
  add_custom_target(utdata_help ALL DEPENDS ${manualPage} ${completion})
  install(FILES ${manualPage} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
  install(FILES ${completion}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
endif()

include(cmake/Package.cmake)
