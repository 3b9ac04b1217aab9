# Parts of scripts/bench: the command line from its start to its end. Sourced by scripts/bench.

# Runs of a program in one measurement: one takes a few milliseconds.
starts=20

vtdirect_program() { say "$root/build/release/hosts/cli/vtdirect"; }

# A home of its own, in memory if that can be: what a disk takes for a new file is more than the start of a program.
start_home() {
  home=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "$work")" vtdirect-bench.XXXXXX)
  export HOME=$home XDG_STATE_HOME=$home XDG_CONFIG_HOME=$home XDG_CACHE_HOME=$home TMPDIR=$home
}

# What "bench_start" runs in turns, after the name of the mode.
start_version() {
  case $1 in
    library) say "$(vtdirect_program) --version" ;;
    reference) say "curl --version" ;;
  esac
}
start_get() {
  case $1 in
    library) say "$(vtdirect_program) --quiet --server bench=$server_url get //bench/?id=D1 --force -o $home/a" ;;
    reference) say "curl -s -o $home/b ${server_url}content" ;;
  esac
}

# run_starts FUNCTION MODE, count_starts NAME FUNCTION MODE: the commands of such a function. None has a blank in a word.
run_starts() { "$bin/bench-run" $starts $("$1" "$2"); }
count_starts() { counted_instructions $("$2" "$3") >>"$work/$1.$3.counted"; }
start_versions() { run_starts start_version "$1"; }
start_gets() { run_starts start_get "$1"; }

# In a shell of its own, since it changes where programs keep their files.
bench_start() (
  local pairs=${PAIRS:-21} number mode
  start_home
  trap 'stop_server; rm -rf "$home"' EXIT
  start_server "$work/server" "$bin/bench-server" 4096
  for number in $(seq 0 "$pairs"); do
    turns "$number" start-version start_versions
    turns "$number" start-get start_gets
    [ "$number" -gt 0 ] || cmp "$home/a" "$home/b" || fail "the downloads differ"
  done
  machine_counts || for number in 1 2 3; do
    for mode in library reference; do
      count_starts start-version start_version "$mode"
      count_starts start-get start_get "$mode"
    done
  done
  {
    heading "$starts starts of the program, $pairs pairs"
    comparison_head vtdirect curl
    comparison start-version "--version" wall:2
    comparison start-get "get of 4 KiB, eight requests, against curl -o, one request" wall:2 instructions:2
    say
    say "Files lie in $(stat -f -c %T "$home"), so that bringing them to the disk counts for nothing."
  } | publish start
)

# write_program NAME WORDS...: writes the program $work/NAME, which runs vtdirect with the words on that server; in them,
# $1 is how many at one time. In a home of its own, so that nothing is kept from one run to the next.
write_program() {
  local name=$1
  shift
  printf '#!/bin/bash\nexport HOME=%s XDG_STATE_HOME= XDG_CACHE_HOME= XDG_CONFIG_HOME=\n' "$work/tree-home" >"$work/$name"
  printf '%s --quiet --server bench=%s %s\n' "$(vtdirect_program)" "$server_url" "$*" >>"$work/$name"
  chmod +x "$work/$name"
}

# tree_round NUMBER NAME PROGRAM: the program with one, 4 and 8 at one time.
tree_round() {
  local parallel
  for parallel in 1 4 8; do
    rm -rf "$work/tree-home" "$work/got.$parallel"
    keep "$1" "$2-$parallel" library "$bin/bench-run" 1 "$work/$3" "$parallel"
  done
}

# tree_rows NAME WHAT: two rows of the table.
tree_rows() {
  local parallel
  for parallel in 4 8; do
    cp "$work/$1-1.library" "$work/$1-$parallel.reference"
    comparison "$1-$parallel" "$2, $parallel at one time" "wall:$([ $parallel = 4 ] && say 0.35 || say 0.2)"
  done
}

bench_tree() {
  local pairs=${PAIRS:-3} folders=${COUNT:-1000} number parallel
  start_server "$work/server" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/tree-data" \
    --latency 20 --seed "bulk:$folders,folders=$folders"
  # shellcheck disable=SC2016  # the program's own argument
  write_program walk 'tree --parallel "$1" //bench' ">$work/tree.\$1"
  # shellcheck disable=SC2016
  write_program fetch 'get -r --parallel "$1" //bench/Products/Bulk/Folders/' "-o $work/got.\$1"
  for number in $(seq 0 "$pairs"); do
    tree_round "$number" "tree-$folders" walk
    for parallel in 4 8; do
      cmp "$work/tree.1" "$work/tree.$parallel" || fail "the walk shows another tree"
    done
  done
  # What waits for some thousand answers needs no round that isn't counted.
  for number in $(seq "$pairs"); do
    tree_round "$number" "get-$folders" fetch
    for parallel in 4 8; do
      diff -r "$work/got.1" "$work/got.$parallel" || fail "get -r fetches something else"
    done
  done
  stop_server
  {
    heading "Over $folders folders on a server that takes 20 ms to answer, $pairs rounds"
    comparison_head "--parallel 4 or 8" "one at a time"
    tree_rows "tree-$folders" "vtdirect tree"
    tree_rows "get-$folders" "get -r, a document in each folder"
    say
    say "$(wc -l <"$work/tree.1") lines, and $(find "$work/got.1" -type f | wc -l) files, the same each time."
  } | publish tree
}
