# What the scripts share. Sourced, not run.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
script=$(basename "$0")
jobs=$(nproc 2>/dev/null || echo 2)

# The same source compiled in two build directories is one entry of the compiler cache.
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1

say() { printf '%s\n' "$*"; }

fail() {
  printf '%s: %s\n' "$script" "$*" >&2
  exit 1
}

# Installs what is missing, and nothing when all is there.
ensure_tools() {
  "$root/scripts/setup" --check >/dev/null 2>&1 || "$root/scripts/setup" "$@"
}

# build PRESET [CMAKE ARGUMENT...]: configures and builds one of the presets into build/PRESET.
build() {
  local preset=$1
  shift
  (cd "$root" && cmake --preset "$preset" "$@") || fail "configuring $preset failed"
  (cd "$root" && cmake --build --preset "$preset" -j "$jobs") || fail "building $preset failed"
}
