# Sourced. check_host PROGRAM: runs the host against a server and compares what it prints.
set -euo pipefail

check_host() {
  local program=$1 directory line url expected printed
  directory=$(mktemp -d)
  : >"$directory/announcement"
  "$VANTRY_SIM" --port 0 --data "$directory/data" --large 1024 >"$directory/announcement" 2>"$directory/errors" &
  server=$!
  trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; rm -rf "'"$directory"'"' EXIT
  for _ in $(seq 300); do
    line=$(cat "$directory/announcement")
    [ -z "$line" ] || break
    kill -0 "$server" 2>/dev/null || { cat "$directory/errors" >&2 && return 1; }
    sleep 0.1
  done
  [ -n "$line" ] || { echo "the server did not say within 30 s where it listens" >&2 && return 1; }
  url=${line##* }
  expected="korvufenloom-vt:${url#http:}?id=D1001&file=/fork.lxz"
  printed=$("$program" "$url")
  if [ "$printed" != "$expected" ]; then
    printf 'expected %s\nprinted  %s\n' "$expected" "$printed" >&2
    return 1
  fi
}
