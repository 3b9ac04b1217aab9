# Parts of scripts/bench: many small requests, from one thread and from several.

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

# counted_instructions COMMAND...: the instructions that the command runs, outside of the kernel.
counted_instructions() {
  local number
  number=$(perf stat -x, -e instructions:u -o /dev/stdout "$@" 2>/dev/null | awk -F, '/instructions/ {print $1}') || true
  if [[ ! $number =~ ^[0-9]+$ ]]; then
    number=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null "$@" 2>&1 >/dev/null |
      awk '/Collected/ {print $4}')
  fi
  [[ $number =~ ^[0-9]+$ ]] || fail "neither perf nor valgrind counted the instructions of: $*"
  say "$number"
}

# instructions_of_a_read MODE: what one read more costs, without the start of the program.
instructions_of_a_read() {
  local few many
  few=$(counted_instructions "$bin/bench-small" "$1" "$server_url" 100) || exit 1
  many=$(counted_instructions "$bin/bench-small" "$1" "$server_url" 600) || exit 1
  say $(((many - few) / 500))
}

bench_small() {
  local pairs=${PAIRS:-31} number connections own theirs measured
  rm -f "$work"/small.*
  start_server "$work/server" "$bin/bench-server" 1
  for number in $(seq 0 "$pairs"); do pair "$number" small bench-small "$server_url" "$count"; done
  connections=$(connections_of "$bin/bench-small" library "$server_url" "$count")
  own=$(instructions_of_a_read library) || exit 1
  theirs=$(instructions_of_a_read reference) || exit 1
  stop_server
  measured=$(ratio small 1)
  {
    say "$count reads of a document on one server, $pairs pairs ($(date -u +%F), load before: $load_before)"
    say
    say "| what | FileExists | bare libcurl | median of the ratios | quartiles | target | met |"
    say "| --- | --- | --- | --- | --- | --- | --- |"
    say "| seconds | $(field small library 1 | median) | $(field small reference 1 | median) | $measured |" \
      "$(ratios small 1 | quartiles) | 1.3 | $(judge "$measured" 1.3) |"
    say "| seconds of the processor | $(field small library 2 | median) | $(field small reference 2 | median) |" \
      "$(ratio small 2) | $(ratios small 2 | quartiles) | | |"
    say "| instructions of a read | $own | $theirs | $(divide "$own" "$theirs") | | | |"
    say "| TCP connections | $connections | 1 | | | 1 | $(judge "$connections" 1) |"
  } | publish small
}

# thread_row NAME TITLE: eight threads at once against one, as a line of the table.
thread_row() {
  local measured
  measured=$(ratio "$1" 1)
  say "| $2 | $(field "$1" library 1 | median) | $(field "$1" reference 1 | median) | $measured |" \
    "$(ratios "$1" 1 | quartiles) | 1.3 | $(judge "$measured" 1.3) |"
}

# thread_pairs PAIRS NAME MODE COUNT [ROWS]: the runs with eight threads count as the library's, those with one as the
# reference's.
thread_pairs() {
  local pairs=$1 name=$2 mode=$3 each=$4 number
  shift 4
  rm -f "$work/$name".*
  for number in $(seq 1 "$pairs"); do
    "$bin/bench-threads" "$mode" "$server_url" 1 "$each" "$@" >>"$work/$name.reference" || fail "one thread failed"
    "$bin/bench-threads" "$mode" "$server_url" 8 "$each" "$@" >>"$work/$name.library" || fail "eight threads failed"
  done
}

bench_threads() {
  local pairs=${PAIRS:-5}
  start_server "$work/server" "$bin/bench-server" 1 20
  thread_pairs "$pairs" exists exists 50
  stop_server
  start_server "$work/server" "$bin/bench-listing-server" 0 50 20
  thread_pairs "$pairs" folders listing 5 100
  stop_server
  {
    say "Eight threads at once on a server that takes 20 ms to answer, $pairs pairs ($(date -u +%F), load before: $load_before)"
    say
    say "| what each thread does | 8 threads, s | 1 thread, s | median of the ratios | quartiles | target | met |"
    say "| --- | --- | --- | --- | --- | --- | --- |"
    thread_row exists "50 times FileExists"
    thread_row folders "5 listings of a folder of 100 documents, 2 pages each"
  } | publish threads
}
