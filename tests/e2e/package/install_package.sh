#!/bin/bash
# install_package.sh KIND SOURCE WORK FLAGS...: builds one kind of the package in WORK, by CMake with these flags, and
# installs it into WORK/prefix.
set -euo pipefail
kind=$1 source=$2 work=$3
shift 3

options=(-DBUILD_SHARED_LIBS=OFF -DVTDIRECT_PLATFORM=default)
case $kind in
  static) ;;
  shared) options=(-DBUILD_SHARED_LIBS=ON -DVTDIRECT_PLATFORM=default) ;;
  external) options=(-DBUILD_SHARED_LIBS=OFF -DVTDIRECT_PLATFORM=external) ;;
  *) echo "unknown kind $kind" >&2 && exit 1 ;;
esac

# What an earlier run installed must not answer for what this one forgets to install.
rm -rf "$work/prefix" "$work/hosts"
mkdir -p "$work/hosts"
cmake -S "$source" -B "$work" -G Ninja "$@" "${options[@]}" \
  -DVTDIRECT_BUILD_PROGRAMS=OFF -DVTDIRECT_BUILD_TESTS=OFF -DVTDIRECT_BUILD_BENCHMARKS=OFF \
  -DVTDIRECT_WARNINGS_AS_ERRORS=ON \
  -DCMAKE_INSTALL_PREFIX="$work/prefix" -DCMAKE_INSTALL_LIBDIR=lib
cmake --build "$work" -j 2
cmake --install "$work"

[ -f "$work/prefix/lib/cmake/VtDirect/VtDirectConfig.cmake" ]
[ -f "$work/prefix/lib/pkgconfig/vtdirect.pc" ]
# The interface of a platform is installed even when the platform itself is the host's.
[ -f "$work/prefix/include/vtdirect/platform/http.h" ]
if [ "$kind" = external ]; then
  [ ! -e "$work/prefix/lib/libvtdirect_platform.a" ]
  [ ! -e "$work/prefix/lib/pkgconfig/vtdirect-platform.pc" ]
else
  [ -f "$work/prefix/share/vtdirect/catalogues/cmsinterface/cmsinterfaceStrings.de.json" ]
fi
