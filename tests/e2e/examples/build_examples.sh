#!/bin/bash
# build_examples.sh SOURCE WORK: builds the programs of a folder of examples against the package installed in WORK.
set -euo pipefail
source=$1 work=$2
build=$work/hosts/$(basename "$source")
cmake -S "$source" -B "$build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Wshadow -Werror"
cmake --build "$build" -j 2
