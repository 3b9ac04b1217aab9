# What every target of this tree is compiled with, and nothing of a project that has this one in its tree. Dependencies
# come in as system headers, so the warnings below speak of our own code only.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Files have helpers of the same name in their anonymous namespaces.
set(CMAKE_UNITY_BUILD OFF)
# Debian 12's filesystem serves downloads of any size.
add_compile_definitions(_FILE_OFFSET_BITS=64)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  find_program(VTDIRECT_CCACHE ccache)
  if(VTDIRECT_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${VTDIRECT_CCACHE})
  endif()
endif()

add_library(vtdirect_warnings INTERFACE)
target_compile_options(vtdirect_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                                   -Woverloaded-virtual)
# A newer compiler warns of more; that must not keep a stranger from building.
if(VTDIRECT_WARNINGS_AS_ERRORS)
  target_compile_options(vtdirect_warnings INTERFACE -Werror)
endif()
# GCC 12 takes the copy inside std::string's operator+ for one that overlaps, at -O3; GCC 13 no longer does.
target_compile_options(vtdirect_warnings INTERFACE
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
# The iterators of the JSON library predate the comparison of C++20, and its templates warn where we use them.
target_compile_options(vtdirect_warnings INTERFACE
                       $<$<CXX_COMPILER_ID:Clang>:-Wno-ambiguous-reversed-operator>)

# Everything that a fuzz target reaches tells the fuzzer where it has been; only the targets get its main().
if(VTDIRECT_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(VTDIRECT_SANITIZE)
  add_compile_options(-fsanitize=${VTDIRECT_SANITIZE} -fno-omit-frame-pointer)
  if(VTDIRECT_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
    # The JSON library adds to the null pointer of its empty stack, which clang alone reports.
    add_compile_options($<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=pointer-overflow>)
  endif()
  add_link_options(-fsanitize=${VTDIRECT_SANITIZE})
endif()

# vtdirect_precompile(TARGET HEADER...): reads headers of libraries once for the whole target, which halves the time of
# its compilation. Not in the plain build: there a file that forgot an include must fail, and the packages that the tests
# make share its objects by the compiler cache, which a precompiled header of another directory would keep from it. Nor
# under ThreadSanitizer, where GCC 12 then warns of what std::string does inside.
function(vtdirect_precompile target)
  if(VTDIRECT_PRECOMPILED_HEADERS)
    target_precompile_headers(${target} PRIVATE ${ARGN})
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>) # for the compiler cache
  endif()
endfunction()
set(vtdirect_common_headers <algorithm> <chrono> <filesystem> <functional> <map> <memory> <mutex> <optional> <string>
                            <string_view> <thread> <vector>)
