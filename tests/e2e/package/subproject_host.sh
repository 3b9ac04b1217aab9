#!/bin/bash
# subproject_host.sh WAY SOURCE WORK HOST FLAGS...: a host that CMake configures with these flags has the library in its
# own tree, by add_subdirectory or FetchContent. The library alone is built, the host's project stays as it was, and the
# host reads a document's UID.
source "$(dirname "$0")/check_host.bash"
way=$1 source=$2 work=$3 host=$4
shift 4

rm -rf "$work"
configure=(cmake -S "$host" -B "$work" -G Ninja "$@" -DWAY="$way"
  -DVTDIRECT_SOURCE="$source" -DVTDIRECT_WARNINGS_AS_ERRORS=ON)
# The library brings no compiler launcher to a parent that chose none, and takes the one that a parent chose.
"${configure[@]}"
"${configure[@]}" -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || command -v env)"
cmake --build "$work" -j 2

[ -f "$work/archives/libvtdirect.a" ]
if [ "$(ctest --test-dir "$work" -N | sed -n 's/^Total Tests: //p')" != 0 ]; then
  echo "the library brought its tests into the parent's" >&2
  exit 1
fi
cmake --install "$work" --prefix "$work/installed"
if [ -e "$work/installed" ]; then
  echo "the library is installed with a parent that didn't ask for it:" >&2
  find "$work/installed" >&2
  exit 1
fi
check_host "$work/programs/parent"
