#!/bin/bash
# find_package_host.sh WORK HOST: a host finds the package by CMake and reads a document's UID.
source "$(dirname "$0")/check_host.bash"
work=$1 host=$2
build=$work/hosts/find_package
cmake -S "$host" -B "$build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix"
cmake --build "$build"
check_host "$build/host"
