#!/bin/bash
# Tests of a host by the shell. The server's directory is filled once, and each test has a copy of it.
set -euo pipefail
here=$(dirname "$0")
work=$(mktemp -d)
server=
trap '[ -z "$server" ] || kill "$server" || true; rm -rf "$work"' EXIT

# start DIRECTORY [OPTION...]: starts a server, and sets `url` and `admin`.
start() {
  : >"$work/announcement"
  "${VANTRY_SIM:-vantry-sim}" --port 0 --admin-port 0 --data "$@" >"$work/announcement" &
  server=$!
  until read -r _ _ _ url _ _ admin <"$work/announcement"; do
    kill -0 "$server" || exit 1
    sleep 0.02
  done
}

stop() { kill "$server" && wait "$server" && server=; }

# prepare: makes the directory that each test gets a copy of.
prepare() { start "$work/golden" --seed "file:$here/bicycles.yaml" && stop; }

vtdirect() { "${VTDIRECT:-vtdirect}" --server "plm=$url" "$@"; }
frame='//plm/Products/Trekking Bike/Folders/Frame/frame.lxz'

document_is_fetched() {
  vtdirect get "$frame" -o "$work/frame"
  [ "$(cat "$work/frame")" = "The second frame." ]
}

refusal_is_told() {
  curl -sf "${admin}faults" -d '{"rule": "GET *content/streams/*=503"}'
  code=0
  vtdirect get "$frame" -o "$work/refused" || code=$?
  [ $code -ne 0 ] && [ ! -e "$work/refused" ]
}

prepare
for test in document_is_fetched refusal_is_told; do
  cp -r "$work/golden" "$work/$test"
  start "$work/$test"
  "$test" >"$work/output" 2>&1 || { cat "$work/output" && echo "$test failed" && exit 1; }
  echo "$test passed"
  stop
done
