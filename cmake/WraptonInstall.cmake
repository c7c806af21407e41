# Installs the library, its header, the CMake package and wrapton.pc.
include(CMakePackageConfigHelpers)

install(TARGETS wrapton EXPORT wraptonTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/wrapton)

set(WRAPTON_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/wrapton)
install(EXPORT wraptonTargets NAMESPACE wrapton:: DESTINATION ${WRAPTON_PACKAGE_DIR})
configure_package_config_file(cmake/wraptonConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cmake/wraptonConfig.cmake
  INSTALL_DESTINATION ${WRAPTON_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/wraptonConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/cmake/wraptonConfig.cmake
  ${PROJECT_BINARY_DIR}/cmake/wraptonConfigVersion.cmake
  DESTINATION ${WRAPTON_PACKAGE_DIR})

# A static library leaves its own needs to the program that links it.
if(BUILD_SHARED_LIBS)
  set(WRAPTON_PC_LIBS_OF_STATIC "")
else()
  set(WRAPTON_PC_LIBS_OF_STATIC " -lstdc++ -pthread")
endif()
file(RELATIVE_PATH WRAPTON_PC_PREFIX  # from the directory of the .pc file, so that a tree can move
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/wrapton.pc.in ${PROJECT_BINARY_DIR}/cmake/wrapton.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cmake/wrapton.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
