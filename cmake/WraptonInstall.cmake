# Installs the library, its header, the CMake package and wrapton.pc.
include(CMakePackageConfigHelpers)

install(TARGETS wrapton EXPORT wraptonTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/wrapton COMPONENT development)

set(WRAPTON_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/wrapton)
install(EXPORT wraptonTargets NAMESPACE wrapton::
  DESTINATION ${WRAPTON_PACKAGE_DIR} COMPONENT development)
configure_package_config_file(cmake/wraptonConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cmake/wraptonConfig.cmake
  INSTALL_DESTINATION ${WRAPTON_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/wraptonConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/cmake/wraptonConfig.cmake
  ${PROJECT_BINARY_DIR}/cmake/wraptonConfigVersion.cmake
  DESTINATION ${WRAPTON_PACKAGE_DIR} COMPONENT development)

# A static library leaves its own needs to the program that links it: pkg-config gives them with
# --static, and always where there is no other library.
set(WRAPTON_PC_LIBS_OF_STATIC "-lstdc++ -lm -pthread")
if(BUILD_SHARED_LIBS)
  set(WRAPTON_PC_LIBS "-lwrapton")
else()
  set(WRAPTON_PC_LIBS "-lwrapton ${WRAPTON_PC_LIBS_OF_STATIC}")
endif()
file(RELATIVE_PATH WRAPTON_PC_PREFIX  # from the directory of the .pc file, so that a tree can move
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/wrapton.pc.in ${PROJECT_BINARY_DIR}/cmake/wrapton.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cmake/wrapton.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
