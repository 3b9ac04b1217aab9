# Parts of scripts/bench: many small requests, from one thread and from several. Sourced by scripts/bench.

# counted: how many connections the server has taken since it started.
counted() { curl -s "${server_url}counters" | awk '{print $2}'; }

# connections_of COMMAND...: how many of them the command takes.
connections_of() {
  local before
  before=$(counted)
  "$@" >/dev/null || fail "failed: $*"
  # Asking for the count takes a connection of its own.
  say $(($(counted) - before - 1))
}

# count_reads MODE: what 1,000 reads take, without the start of the program.
count_reads() {
  local few many
  few=$(counted_instructions "$bin/bench-small" "$1" "$server_url" 200) || exit 1
  many=$(counted_instructions "$bin/bench-small" "$1" "$server_url" 1200) || exit 1
  say $((many - few))
}

# a_read NAME MODE: instructions of one read.
a_read() { column "$1" "$2" instructions | median | awk -v n="$reads" '{printf "%.0f", $1 / n}'; }

bench_small() {
  local pairs=${PAIRS:-31} number connections reads=$count
  start_server "$work/server" "$bin/bench-server" 1
  for number in $(seq 0 "$pairs"); do
    pair "$number" small bench-small "$server_url" "$count"
    keep "$number" small-alike reference "$bin/bench-small" alike "$server_url" "$count"
  done
  connections=$(connections_of "$bin/bench-small" library "$server_url" "$count")
  if ! machine_counts; then
    reads=1000
    for number in 1 2 3; do
      keep "$number" small library.counted count_reads library
      keep "$number" small reference.counted count_reads reference
      keep "$number" small-alike reference.counted count_reads alike
    done
    cp "$work/small.library.counted" "$work/small-alike.library.counted"
  fi
  stop_server
  cp "$work/small.library" "$work/small-alike.library"
  {
    heading "$count reads of a document on one server, $pairs pairs"
    comparison_head FileExists "bare libcurl"
    comparison small "reads of a document" processor:1.15 instructions:1.35
    comparison small-alike "... against bare libcurl with the library's header lines"
    say
    say "Instructions of a read: $(a_read small library), and $(a_read small reference) by bare libcurl," \
      "$(a_read small-alike reference) with the library's header lines."
    say
    bound_head
    bound "TCP connections" "$connections" 1
  } | publish small
}

# thread_pairs PAIRS NAME MODE COUNT [ROWS]: the runs with eight threads count as the library's, those with one as the
# reference's.
thread_pairs() {
  local pairs=$1 name=$2 mode=$3 each=$4 number
  shift 4
  for number in $(seq 1 "$pairs"); do
    keep "$number" "$name" reference "$bin/bench-threads" "$mode" "$server_url" 1 "$each" "$@"
    keep "$number" "$name" library "$bin/bench-threads" "$mode" "$server_url" 8 "$each" "$@"
  done
}

bench_threads() {
  local pairs=${PAIRS:-5}
  start_server "$work/server" "$bin/bench-server" 1 20
  thread_pairs "$pairs" threads-exists exists 50
  stop_server
  start_server "$work/server" "$bin/bench-listing-server" 0 50 20
  thread_pairs "$pairs" threads-folders listing 5 100
  stop_server
  {
    heading "Eight threads at once on a server that takes 20 ms to answer, $pairs pairs"
    comparison_head "8 threads" "1 thread"
    comparison threads-exists "50 times FileExists in each" wall:1.3
    comparison threads-folders "5 listings of a folder of 100 documents in each, 2 pages a listing" wall:1.3
    say
    say "Eight threads do eight times the work of one, so their processor time is eight times that of one at best."
  } | publish threads
}
