# The library and its platform, first as objects, so that tests can reach what the libraries hide and can put
# a scripted transport in the place of the HTTP one.
#
#   vtdirect_objects             every layer of the library
#   vtdirect_platform_transport  ConnectURI, DoRequestWithCommonAuth, their settings and credentials
#   vtdirect_platform_rest       everything else that platform/ asks for
find_package(RapidJSON REQUIRED)
# GLOBAL: a static library passes these on to the programs of a project around this one, whose folder must know them.
find_package(EXPAT REQUIRED GLOBAL)

add_library(vtdirect_rapidjson INTERFACE)
target_include_directories(vtdirect_rapidjson SYSTEM INTERFACE ${RAPIDJSON_INCLUDE_DIRS})

# The headers alone: what is compiled of them goes into this library, and what is installed needs nothing of Boost.
find_package(Boost 1.81 REQUIRED)
add_library(vtdirect_boost_json INTERFACE)
target_include_directories(vtdirect_boost_json SYSTEM INTERFACE ${Boost_INCLUDE_DIRS})

add_library(vtdirect_headers INTERFACE)
target_include_directories(vtdirect_headers INTERFACE ${PROJECT_SOURCE_DIR})

add_library(vtdirect_objects OBJECT)
target_link_libraries(vtdirect_objects PUBLIC vtdirect_headers vtdirect_rapidjson vtdirect_boost_json EXPAT::EXPAT
                                       PRIVATE vtdirect_warnings)
vtdirect_precompile(vtdirect_objects ${vtdirect_common_headers} <rapidjson/document.h>)
add_subdirectory(base)
add_subdirectory(connection)
add_subdirectory(documents)
add_subdirectory(translation)
add_subdirectory(browsing)
add_subdirectory(server)
add_subdirectory(public)

add_library(vtdirect)
add_library(VtDirect::vtdirect ALIAS vtdirect)
target_sources(vtdirect PRIVATE $<TARGET_OBJECTS:vtdirect_objects>)
target_link_libraries(vtdirect PRIVATE $<BUILD_INTERFACE:vtdirect_rapidjson> EXPAT::EXPAT)
set_target_properties(vtdirect PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})

if(VTDIRECT_PLATFORM STREQUAL "default")
  find_package(CURL REQUIRED GLOBAL)
  find_package(OpenSSL REQUIRED GLOBAL)
  find_package(ZLIB REQUIRED GLOBAL)
  add_library(vtdirect_platform_transport OBJECT)
  target_link_libraries(vtdirect_platform_transport PUBLIC vtdirect_headers CURL::libcurl OpenSSL::SSL ZLIB::ZLIB
                                                    PRIVATE vtdirect_warnings)
  add_library(vtdirect_platform_rest OBJECT)
  target_link_libraries(vtdirect_platform_rest PUBLIC vtdirect_headers vtdirect_rapidjson
                                               PRIVATE vtdirect_warnings)
  vtdirect_precompile(vtdirect_platform_transport ${vtdirect_common_headers} <curl/curl.h>)
  add_subdirectory(platform_default)

  add_library(vtdirect_platform)
  add_library(VtDirect::platform ALIAS vtdirect_platform)
  target_sources(vtdirect_platform PRIVATE $<TARGET_OBJECTS:vtdirect_platform_transport>
                                           $<TARGET_OBJECTS:vtdirect_platform_rest>)
  target_link_libraries(vtdirect_platform PRIVATE CURL::libcurl OpenSSL::SSL ZLIB::ZLIB)
  set_target_properties(vtdirect_platform PROPERTIES EXPORT_NAME platform VERSION ${PROJECT_VERSION}
                                                     SOVERSION ${PROJECT_VERSION_MAJOR})
  target_link_libraries(vtdirect PUBLIC vtdirect_platform)
endif()

# Hidden visibility leaves the standard library's templates visible; the lists leave only what is meant.
if(BUILD_SHARED_LIBS)
  foreach(library IN ITEMS vtdirect vtdirect_platform)
    if(TARGET ${library})
      set(exports ${PROJECT_SOURCE_DIR}/cmake/exports/${library}.map)
      target_link_options(${library} PRIVATE LINKER:--version-script=${exports})
      set_target_properties(${library} PROPERTIES LINK_DEPENDS ${exports})
    endif()
  endforeach()
endif()

# What a host in this tree sees is what it sees after an install: the installed headers and nothing else.
set(VTDIRECT_STAGED_HEADERS ${PROJECT_BINARY_DIR}/include)
set(VTDIRECT_PUBLIC_HEADERS public/vt_direct_manager.h public/vt_direct_utils.h public/outcome.h)
file(GLOB VTDIRECT_PLATFORM_HEADERS CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
     ${PROJECT_SOURCE_DIR}/platform/*.h)
foreach(header IN LISTS VTDIRECT_PUBLIC_HEADERS)
  get_filename_component(name ${header} NAME)
  configure_file(${PROJECT_SOURCE_DIR}/${header} ${VTDIRECT_STAGED_HEADERS}/vtdirect/${name} COPYONLY)
endforeach()
foreach(header IN LISTS VTDIRECT_PLATFORM_HEADERS)
  get_filename_component(name ${header} NAME)
  configure_file(${PROJECT_SOURCE_DIR}/${header} ${VTDIRECT_STAGED_HEADERS}/vtdirect/platform/${name} COPYONLY)
endforeach()
target_include_directories(vtdirect PUBLIC $<BUILD_INTERFACE:${VTDIRECT_STAGED_HEADERS}>)
if(TARGET vtdirect_platform)
  target_include_directories(vtdirect_platform PUBLIC $<BUILD_INTERFACE:${VTDIRECT_STAGED_HEADERS}>)
endif()
