# Debian packages, one a component: scripts/package builds them with cpack from a tree of shared libraries that is
# to be installed below /usr.
#
# A component joins by install rules that name it and by a call of vtdirect_debian_package. What every Debian package
# has beside its own files (copyright, changelog, compressed manual pages) is added by debian/finish_tree.cmake.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vtdirect)
set(CPACK_PACKAGE_CONTACT "VtDirect maintainers <maintainers@vtdirect.example>")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/finish_tree.cmake)
set(CPACK_VTDIRECT_DEBIAN_FOLDER ${PROJECT_SOURCE_DIR}/cmake/debian)
set(CPACK_VTDIRECT_PROJECT ${PROJECT_NAME})

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(packageVersion ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Before 1.0.0 a minor version may break callers, so that a program wants the very version that it was built with.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})

set(CPACK_COMPONENTS_ALL "")

# vtdirect_debian_package(COMPONENT NAME SECTION DESCRIPTION [DEPENDS PACKAGE...])
# The first line of DESCRIPTION is the summary; no line may be longer than 79 characters. What the programs and
# libraries of the component are linked with is depended on without being named.
macro(vtdirect_debian_package component name section description)
  cmake_parse_arguments(PACKAGE "" "" "DEPENDS" ${ARGN})
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}")
  list(JOIN PACKAGE_DEPENDS ", " CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS)
  # For finish_tree.cmake, which finds the component's files in a folder of the component's name.
  list(APPEND CPACK_VTDIRECT_PACKAGES ${component}=${name})
endmacro()

set(library libvtdirect${PROJECT_VERSION_MAJOR})
vtdirect_debian_package(runtime ${library} libs
"virtual file system on a Vantry server - libraries
A client library through which an application treats a product data
management server of the Vantry kind as a virtual file system: it browses,
fetches, stores, checks out and in, and hands documents to translation."
  DEPENDS "libvtdirect-common (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)

# Two versions of the libraries may be installed at once, but not two files of one name.
vtdirect_debian_package(catalogues libvtdirect-common misc
"virtual file system on a Vantry server - translations
The words that the library shows in paths, in English, German, French and
Japanese.")
set(CPACK_DEBIAN_CATALOGUES_PACKAGE_ARCHITECTURE all)

vtdirect_debian_package(development libvtdirect-dev libdevel
"virtual file system on a Vantry server - development files
Headers, the CMake package VtDirect and the pkg-config files with which an
application is built that uses the library, and examples of such."
  DEPENDS "${library} (= ${packageVersion})")

if(VTDIRECT_BUILD_PROGRAMS)
  vtdirect_debian_package(programs vtdirect-tools utils
"virtual file system on a Vantry server - command line
The command line vtdirect, which browses, fetches and stores documents."
    DEPENDS "${library} (= ${packageVersion})")

  # Apart, so that only who mounts needs libfuse.
  if(VTDIRECT_BUILD_MOUNT)
    vtdirect_debian_package(mount vtdirect-mount utils
"virtual file system on a Vantry server - mount
The program behind \"vtdirect mount\", which shows a server as a directory that
every program can read."
      DEPENDS "${library} (= ${packageVersion})" "vtdirect-tools (= ${packageVersion})" fuse3)
  endif()

  # It shares nothing with the libraries, so that a host's test machine needs it alone.
  vtdirect_debian_package(simulator vantry-sim devel
"Vantry server to test clients against
A server that speaks the wire of a product data management server of the
Vantry kind, with a database of its own, for the tests of its clients: it
starts from a file, goes back to it, tells what it was asked, and fails in the
ways that it is told."
  )
endif()

include(CPack)
