# Install rules: headers, libraries, the CMake package, pkg-config files, catalogues, programs.
#
# Components: runtime (shared libraries), catalogues (what no version of the libraries owns), development (headers,
# static libraries, package files), programs, which is the default of whatever names none, and simulator. VtDirectPackages.cmake
# makes a Debian package of each.
include(CMakePackageConfigHelpers)

set(VTDIRECT_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VtDirect)
set(VTDIRECT_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(installed_libraries vtdirect)
if(TARGET vtdirect_platform)
  list(APPEND installed_libraries vtdirect_platform)
endif()
install(TARGETS ${installed_libraries} EXPORT VtDirectTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT VtDirectTargets NAMESPACE VtDirect:: DESTINATION ${VTDIRECT_PACKAGE_DIR} COMPONENT development)

install(DIRECTORY ${VTDIRECT_STAGED_HEADERS}/vtdirect DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT development)
if(TARGET vtdirect_platform)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/catalogues/cmsinterface
          DESTINATION ${CMAKE_INSTALL_DATADIR}/vtdirect/catalogues COMPONENT catalogues)
endif()

# The CMake package.
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/templates/VtDirectConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/VtDirectConfig.cmake
                              INSTALL_DESTINATION ${VTDIRECT_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VtDirectConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VtDirectConfig.cmake ${PROJECT_BINARY_DIR}/VtDirectConfigVersion.cmake
        DESTINATION ${VTDIRECT_PACKAGE_DIR} COMPONENT development)

# pkg-config. The prefix is found from where the file lies, so that an installed tree can be moved. A static
# library's dependencies are named as plain requirements: they are shared libraries here, and "--static" would
# ask for the static form of everything that libcurl itself is built from.
file(RELATIVE_PATH VTDIRECT_PKGCONFIG_TO_PREFIX /prefix/${VTDIRECT_PKGCONFIG_DIR} /prefix)
string(REGEX REPLACE "/$" "" VTDIRECT_PKGCONFIG_TO_PREFIX ${VTDIRECT_PKGCONFIG_TO_PREFIX})
set(VTDIRECT_PC_REQUIRES "")
set(VTDIRECT_PLATFORM_PC_REQUIRES "")
if(TARGET vtdirect_platform)
  list(APPEND VTDIRECT_PC_REQUIRES "vtdirect-platform = ${PROJECT_VERSION}")
endif()
if(NOT BUILD_SHARED_LIBS)
  list(APPEND VTDIRECT_PC_REQUIRES expat)
  list(APPEND VTDIRECT_PLATFORM_PC_REQUIRES "libcurl, libssl, libcrypto, zlib")
endif()
list(JOIN VTDIRECT_PC_REQUIRES ", " VTDIRECT_PC_REQUIRES)
set(pkgconfig_files vtdirect)
if(TARGET vtdirect_platform)
  list(APPEND pkgconfig_files vtdirect-platform)
endif()
foreach(name IN LISTS pkgconfig_files)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/templates/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${VTDIRECT_PKGCONFIG_DIR} COMPONENT development)
endforeach()

# Programs. hosts/cli installs its own with the pages that it writes; the simulator's are here.
if(TARGET vantry-sim)
  install(TARGETS vantry-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT simulator)
  install(FILES ${PROJECT_SOURCE_DIR}/simulator/vantry-sim.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
          COMPONENT simulator)
  install(FILES ${PROJECT_SOURCE_DIR}/simulator/vantry-sim.bash-completion
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT simulator RENAME vantry-sim)
  # In a folder of its own, where no page of the library is.
  file(READ ${PROJECT_SOURCE_DIR}/simulator/README.md simulator_page)
  string(REPLACE "[SECURITY.md](../SECURITY.md)" "`SECURITY.md` of the sources" simulator_page "${simulator_page}")
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/simulator_page/README.md CONTENT "${simulator_page}" @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/simulator_page/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vantry-sim
          COMPONENT simulator)
endif()
# README and the pages link to each other by where they are in the sources.
foreach(page IN ITEMS LICENSE README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md)
  install(FILES ${PROJECT_SOURCE_DIR}/${page} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/simulator/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/simulator
        COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
        COMPONENT development)

# Shared libraries are found beside each other, wherever the tree is put.
if(BUILD_SHARED_LIBS)
  set_target_properties(vtdirect PROPERTIES INSTALL_RPATH "$ORIGIN")
  file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  if(TARGET vtdirect-cli)
    set_target_properties(vtdirect-cli PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  endif()
endif()
