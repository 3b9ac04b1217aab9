# What the scripts share. Sourced, not run.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
script=$(basename "$0")
jobs=$(nproc 2>/dev/null || echo 2)

# The same source compiled in two build directories, or in two clones, is one entry of the compiler cache.
export CCACHE_NOHASHDIR=1
export CCACHE_BASEDIR=$root
# Without this the cache takes nothing that uses the precompiled headers of the tests.
export CCACHE_SLOPPINESS=pch_defines,time_macros

say() { printf '%s\n' "$*"; }

fail() {
  printf '%s: %s\n' "$script" "$*" >&2
  exit 1
}

# Installs what is missing, and nothing when all is there.
ensure_tools() {
  "$root/scripts/setup" --check "$@" >/dev/null 2>&1 || "$root/scripts/setup" "$@"
}

# build PRESET [TARGET...]: configures one of the presets and builds the targets, or all, into build/PRESET.
build() {
  local preset=$1
  shift
  local targets=()
  [ $# -eq 0 ] || targets=(--target "$@")
  (cd "$root" && cmake --preset "$preset") || fail "configuring $preset failed"
  (cd "$root" && cmake --build --preset "$preset" -j "$jobs" "${targets[@]}") || fail "building $preset failed"
}

# start_server LOG COMMAND...: starts a server that announces "... on http://..." on its first line, and sets
# `server_pid` and `server_url`.
start_server() {
  local log=$1 line=
  shift
  : >"$log"
  "$@" >"$log" 2>"$log.errors" &
  server_pid=$!
  for _ in $(seq 600); do
    line=$(grep -m 1 -o 'http://[^ ]*' "$log" || true)
    [ -z "$line" ] || break
    kill -0 "$server_pid" 2>/dev/null || fail "the server did not start: $(cat "$log.errors")"
    sleep 0.1
  done
  [ -n "$line" ] || fail "the server did not say within a minute where it listens"
  server_url=$line
}

# Stops the server, if there is one, and waits until it is gone.
stop_server() {
  [ -n "${server_pid:-}" ] || return 0
  kill "$server_pid" 2>/dev/null || true
  wait "$server_pid" 2>/dev/null || true
  server_pid=
}
