#!/bin/bash
# pkg_config_host.sh WORK HOST: a host finds the package by pkg-config and reads a document's UID. The tree is
# copied elsewhere first: its files must not know where they were installed.
source "$(dirname "$0")/check_host.bash"
work=$1 host=$2
moved=$work/hosts/moved
rm -rf "$moved"
cp -r "$work/prefix" "$moved"
export PKG_CONFIG_PATH=$moved/lib/pkgconfig
[ "$(pkg-config --modversion vtdirect)" = "$(pkg-config --modversion vtdirect-platform)" ]
read -ra flags <<<"$(pkg-config --cflags --libs vtdirect)"
"$CXX" -std=c++17 "$host/host.cpp" "${flags[@]}" -Wl,-rpath,"$moved/lib" -o "$work/hosts/pkg_config_host"
check_host "$work/hosts/pkg_config_host"
