#!/bin/bash
# headers_stand_alone.sh WORK: every installed header compiles alone as C++17, brings no third party's header
# along, and the public ones bring the standard library alone.
set -euo pipefail
include=$1/prefix/include
count=0
while read -r header; do
  count=$((count + 1))
  printf '#include <%s>\n' "$header" |
    "$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Werror -fsyntax-only -I "$include" -x c++ -
  dependencies=$(printf '#include <%s>\n' "$header" | "$CXX" -std=c++17 -I "$include" -M -x c++ -)
  if grep -E '/(rapidjson|curl|expat[a-z_]*\.h)' <<<"$dependencies"; then
    echo "$header includes what a host must not need" >&2
    exit 1
  fi
  if [[ $header == vtdirect/vt_direct_*.h || $header == vtdirect/outcome.h ]] && grep -F "$include/vtdirect/platform" <<<"$dependencies"; then
    echo "$header includes a header of the platform" >&2
    exit 1
  fi
done < <(cd "$include" && find vtdirect -name '*.h' | sort)
echo "$count headers"
[ "$count" -ge 12 ]
