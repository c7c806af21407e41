# Debian packages by CPack, a package for each part of what is installed.
set(WRAPTON_PACKAGE_CONTACT "The Wrapton developers <wrapton@example.org>" CACHE STRING
  "Name and mail address that the Debian packages give as their maintainer's")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME wrapton)
set(CPACK_PACKAGE_VENDOR wrapton)
set(CPACK_PACKAGE_CONTACT "${WRAPTON_PACKAGE_CONTACT}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL development)
if(BUILD_SHARED_LIBS)
  list(APPEND CPACK_COMPONENTS_ALL runtime)
endif()
if(WRAPTON_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The first line of each description is the package's summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libwrapton${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "library that packages coded frames into containers
MP4, MOV, 3GP, ASF, AVI, FLV, Matroska, WAV, MPEG-2 transport and program
streams, RTP, and a recording format of its own. Nothing is decoded.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libwrapton-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"library that packages coded frames into containers - development files
The headers for C and C++, and what CMake and pkg-config need to find the
library.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME wrapton-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION video)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "command that packages coded streams into containers
It reads elementary streams, containers and native recordings, packages
them, tells which container holds them, and looks into native recordings.")

set(WRAPTON_SAME_LIBRARY "libwrapton${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
if(BUILD_SHARED_LIBS)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${WRAPTON_SAME_LIBRARY}")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${WRAPTON_SAME_LIBRARY}")
endif()
find_program(WRAPTON_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(WRAPTON_SHLIBDEPS)
if(WRAPTON_SHLIBDEPS)  # finds out which libraries the programs need
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/Src)
endif()
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(WRAPTON_DEBIAN_DIR ${PROJECT_BINARY_DIR}/debian)
file(CONFIGURE OUTPUT ${WRAPTON_DEBIAN_DIR}/triggers CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${WRAPTON_DEBIAN_DIR}/triggers)

# What the Debian Policy Manual asks every package for (12.5, 12.7). EXCLUDE_FROM_ALL: it is for
# packages, not for those who install by themselves.
file(READ LICENSE WRAPTON_LICENSE)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)" WRAPTON_COPYRIGHT "${WRAPTON_LICENSE}")
set(WRAPTON_COPYRIGHT ${CMAKE_MATCH_1})
string(REGEX REPLACE "^.*Copyright[^\n]*\n\n" "" WRAPTON_LICENSE "${WRAPTON_LICENSE}")
string(REGEX REPLACE "\n+$" "" WRAPTON_LICENSE "${WRAPTON_LICENSE}")
string(REPLACE "\n\n" "\n.\n" WRAPTON_LICENSE "${WRAPTON_LICENSE}")
string(REPLACE "\n" "\n " WRAPTON_LICENSE "${WRAPTON_LICENSE}")
string(TIMESTAMP WRAPTON_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)  # or SOURCE_DATE_EPOCH
configure_file(cmake/debian/copyright.in ${WRAPTON_DEBIAN_DIR}/copyright @ONLY)
configure_file(cmake/debian/changelog.in ${WRAPTON_DEBIAN_DIR}/changelog @ONLY)
find_program(WRAPTON_GZIP gzip)
mark_as_advanced(WRAPTON_GZIP)
set(WRAPTON_DEBIAN_DOCS ${WRAPTON_DEBIAN_DIR}/copyright)
if(WRAPTON_GZIP)
  execute_process(
    COMMAND ${WRAPTON_GZIP} -9nkf ${WRAPTON_DEBIAN_DIR}/changelog COMMAND_ERROR_IS_FATAL ANY)
  list(APPEND WRAPTON_DEBIAN_DOCS ${WRAPTON_DEBIAN_DIR}/changelog.gz)
endif()
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  install(FILES ${WRAPTON_DEBIAN_DOCS}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
