#!/bin/bash
# header_example.sh SOURCE INCLUDE: the example in the comment of outcome.h compiles as a host would compile it.
set -euo pipefail
example=$(awk '$0 == "/// ```cpp" {inside = 1; next} $0 == "/// ```" {exit} inside {sub("^/// ?", ""); print}' \
  "$1/public/outcome.h")
[ "$(wc -l <<<"$example")" -ge 10 ]
{
  printf '#include <vtdirect/outcome.h>\n#include <vtdirect/vt_direct_manager.h>\n#include <cstdio>\n#include <string>\n'
  printf '%s\n' "$example"
} | "$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$2" -x c++ -
