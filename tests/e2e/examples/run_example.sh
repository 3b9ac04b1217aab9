#!/bin/bash
# run_example.sh NAME PROGRAMS: runs the example NAME against a server of its own and looks at what it did.
#
# What is expected is the demonstration story of vantry-sim: a document's content is in the stream whose number is the
# document's with a 0 after it, and Anna is who asks.
set -euo pipefail
name=$1 programs=$2
work=$(mktemp -d)
server=
clean_up() {
  [ -z "$server" ] || { kill "$server" && wait "$server"; } 2>/dev/null || true
  rm -rf "$work"
}
trap clean_up EXIT
export XDG_CONFIG_HOME=$work HOME=$work no_proxy=127.0.0.1 NO_PROXY=127.0.0.1
frame='//plm/Products/Trekking Bike/Folders/Frame'

# start [OPTION...]: starts the server and sets `url`.
start() {
  "$VANTRY_SIM" --port 0 --data "$work/data" --large 1000000 "$@" >"$work/announcement" 2>"$work/errors" &
  server=$!
  for _ in $(seq 300); do
    [ ! -s "$work/announcement" ] || break
    kill -0 "$server" || { cat "$work/errors" >&2 && exit 1; }
    sleep 0.1
  done
  url=$(grep -o 'http://.*' "$work/announcement")
}

# run EXIT_CODE ARGUMENT...: runs the example, whose output goes to $work/printed, and looks at its exit code.
run() {
  local expected=$1 code=0
  shift
  "$programs/$name" "$@" >"$work/printed" 2>"$work/said" || code=$?
  [ "$code" -eq "$expected" ] || wrong "$name ended with $code and should have ended with $expected"
}

wrong() {
  printf '%s\n' "$*" >&2
  tail -n 20 "$work/printed" "$work/said" >&2
  exit 1
}

prints() { grep -qxF -e "$1" "$work/printed" || wrong "it did not print: $1"; }
prints_like() { grep -qE -e "$1" "$work/printed" || wrong "it printed nothing like: $1"; }
says() { grep -qF -e "$1" "$work/said" || wrong "it did not say: $1"; }
uid_of() { echo "korvufenloom-vt:${url#http:}?id=$1&file=/$2"; }
content() { cmp "$1" "$work/data/content/$2" || wrong "$1 is not what the server has"; }

# fetched ADDRESS FILE: what the server gives there is the content of the file.
fetched() {
  "$programs/fetch" "$url" "$1" "$work/back" >/dev/null || wrong "$1 could not be fetched"
  cmp "$work/back" "$2" || wrong "the server has another content than $2"
}

check_fetch() {
  start
  run 0 "$url" "$frame/fork.lxz" "$work/fork.lxz"
  prints "$(uid_of D1001 fork.lxz)"
  content "$work/fork.lxz" 10010
  run 1 "$url" "$frame/no such.lxz" "$work/nothing"
  [ ! -e "$work/nothing" ] || wrong "a file was made for nothing"
}

check_list() {
  start
  run 0 "$url" "$frame/"
  prints_like $'^fork\\.lxz\t0000100001 .*B\\.1'
  prints_like $'^frame\\.lxz\t0000100002 .*A\\.3'
  run 0 "$url" '//plm/Products/Trekking Bike/Folders/Drivetrain/'
  prints_like '^Chains/'
  run 1 "$url" '//plm/Products/No such bike/Folders/'
}

check_store() {
  start
  printf 'a stem' >"$work/stem.lxz"
  run 0 "$url" "$frame/stem.lxz" "$work/stem.lxz"
  prints_like $'^A\\.1\t.*&file=/stem\\.lxz$'
  fetched "$frame/stem.lxz" "$work/stem.lxz"
  printf 'a shorter stem' >"$work/stem.lxz"
  run 0 "$url" "$frame/stem.lxz" "$work/stem.lxz"
  prints_like $'^A\\.2\t'
  fetched "$frame/stem.lxz" "$work/stem.lxz"
  run 1 "$url" "$frame/nothing.lxz" "$work/no such file"
  # A server would make it in the folder above the one that is not there.
  run 1 "$url" '//plm/Products/Trekking Bike/Folders/Nix/stem2.lxz' "$work/stem.lxz"
  says 'there is no such folder'
  "$programs/list" "$url" '//plm/Products/Trekking Bike/Folders/' >"$work/printed"
  ! grep -q stem2 "$work/printed" || wrong 'it was stored into the folder above'
  run 0 "$url" '//plm/Products/Trekking Bike/Folders/stem3.lxz' "$work/stem.lxz"
}

check_checkout() {
  start
  printf 'a frame of steel' >"$work/frame.lxz"
  run 0 "$url" "$frame/frame.lxz" "$work/frame.lxz"
  prints_like '&file=/frame\.lxz$'
  fetched "$frame/frame.lxz" "$work/frame.lxz"
  run 1 "$url" '//plm/?id=D1015' "$work/frame.lxz"
  says 'it is checked out by bruno'
  # A file that cannot be read leaves no checkout.
  run 1 "$url" "$frame/fork.lxz" "$work/no such file"
  says 'nothing was stored'
  run 0 "$url" "$frame/fork.lxz" "$work/frame.lxz"
}

check_progress() {
  start
  run 0 "$url" '//plm/?id=D1009' "$work/scan.bin" 1000000
  content "$work/scan.bin" 10090
  says ' %'
  run 1 "$url" '//plm/?id=D1009' "$work/scan.bin" 999999
  says cancelled
  [ ! -e "$work/scan.bin" ] || wrong "half a file was left"
}

check_task_runner() {
  start
  mkdir "$work/here"
  run 0 "$url" "$work/here" '//plm/?id=D1001' '//plm/?id=D1002'
  prints '2 of 2'
  content "$work/here/__plm__id_D1001" 10010
  content "$work/here/__plm__id_D1002" 10020
  run 1 "$url" "$work/here" '//plm/?id=D1001' '//plm/?id=D9999'
  prints '1 of 2'
}

check_credentials() {
  start --user anna:secret
  run 0 "$url" anna '//plm/?id=D1001' <<<$'wrong\nsecret'
  prints "$(uid_of D1001 fork.lxz)"
  run 1 "$url" anna '//plm/?id=D1001' <<<$'one\ntwo\nthree\nfour\nfive\nsix\nseven\neight\nnine\nten'
  says 'not found, or not allowed'
  [ "$(grep -o 'Password of anna' "$work/said" | wc -l)" -eq 3 ] || wrong "it did not ask three times"
  run 1 "$url" anna '//plm/?id=D1001' </dev/null
}

check_translations() {
  start
  printf '<xliff version="1.2"/>' >"$work/manual.xlf"
  run 0 "$url" '//plm/?id=D1028' "$work/manual.xlf" en fr
  prints_like "^de"$'\t'"$(stat -c %s "$work/data/content/10300")"$'\t.*id=D1030&'
  prints_like "^fr"$'\t'"$(stat -c %s "$work/data/content/10310")"$'\t.*id=D1031&'
  fetched '//plm/Products/Trekking Bike/Folders/Translations/welding manual.xlf' "$work/manual.xlf"
  run 1 "$url" '//plm/?id=D1028' "$work/manual.xlf" en it
  says 'not published'
}

check_reasons() {
  start
  run 0 "$url" '//plm/?id=D1001'
  prints 'nothing is wrong'
  run 1 "$url" '//plm/?id=D9999'
  prints_like ': not found$'
  prints '  HTTP 404'
  prints '  there is no such document'
  run 1 "$url" nix
  prints 'find the server: not found'
  prints '  the address names no listed server'
  # A document without a content.
  run 1 "$url" '//plm/?id=D1011'
  prints_like ': not found$'
  kill "$server" && wait "$server" || true
  server=
  run 1 "$url" '//plm/?id=D1001'
  prints_like ': unreachable$'
  prints_like "^  at $url"
  prints '  see whether the server runs'
}

check_own_platform() {
  start
  run 0 "$url" "$frame/fork.lxz" "$work/fork.lxz"
  prints "$(uid_of D1001 fork.lxz)"
  content "$work/fork.lxz" 10010
  run 1 "$url" '//plm/?id=D9999' "$work/nothing"
  ! ldd "$programs/$name" | grep -i curl || wrong "it depends on libcurl, though its platform does not"
}

"check_$name"
