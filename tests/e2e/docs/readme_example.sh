#!/bin/bash
# readme_example.sh SOURCE WORK: the two files that README shows are built against the installed package as a reader
# would build them, and fetch a document from a server that demands a password.
set -euo pipefail
source=$1 work=$2
example=$work/hosts/readme
rm -rf "$example"
mkdir -p "$example"

# block LANGUAGE: the first fenced block of that language.
block() { awk -v fence='```'"$1" '$0 == fence {inside = 1; next} inside && /^```/ {exit} inside' "$source/README.md"; }
block cpp >"$example/fetch.cpp"
block cmake >"$example/CMakeLists.txt"
[ -s "$example/fetch.cpp" ] && [ -s "$example/CMakeLists.txt" ]

cmake -S "$example" -B "$example/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror"
cmake --build "$example/build"

"$VANTRY_SIM" --port 0 --data "$example/data" --large 1024 --user anna:secret >"$example/announcement" &
server=$!
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true' EXIT
for _ in $(seq 300); do
  [ ! -s "$example/announcement" ] || break
  kill -0 "$server"
  sleep 0.1
done
url=$(grep -o 'http://.*' "$example/announcement")

printed=$(PLM_PASSWORD=secret "$example/build/fetch" "$url" '//plm/?id=D1001' "$example/fork.lxz")
[ "$printed" = "korvufenloom-vt:${url#http:}?id=D1001&file=/fork.lxz" ]
cmp "$example/fork.lxz" "$example/data/content/10010"

# Without the password it fails and says so by its exit code.
if "$example/build/fetch" "$url" '//plm/?id=D1001' "$example/refused.lxz" >/dev/null 2>"$example/said"; then
  echo "the example fetched a document without the password" >&2
  exit 1
fi
grep -q ': credentials wanted$' "$example/said"
