#!/bin/bash
# external_platform_host.sh WORK HOST: a host brings its own platform; no libcurl comes along.
set -euo pipefail
work=$1 host=$2
build=$work/hosts/external
cmake -S "$host" -B "$build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix"
cmake --build "$build"
printed=$("$build/host" http://stub.example/vt)
expected='korvufenloom-vt://stub.example/vt/?id=D1001&file=/stub.lxz'
if [ "$printed" != "$expected" ]; then
  printf 'expected %s\nprinted  %s\n' "$expected" "$printed" >&2
  exit 1
fi
if ldd "$build/host" | grep -i curl; then
  echo "the host depends on libcurl, though its platform does not" >&2
  exit 1
fi
