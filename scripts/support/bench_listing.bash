# Parts of scripts/bench: large answers, and the reader of JSON by itself. Sourced by scripts/bench.

run_listing_pairs() {
  local pairs=$1 number rows
  start_server "$work/server" "$bin/bench-listing-server" 0
  for number in $(seq 0 "$pairs"); do
    for rows in 10000 100000 1000000; do
      pair "$number" "rows-$rows" bench-listing "$server_url" "$rows"
      keep "$number" "rows-$rows-fetch" reference "$bin/bench-listing" fetch "$server_url" "$rows"
    done
  done
  stop_server
  for rows in 10000 100000 1000000; do cp "$work/rows-$rows.library" "$work/rows-$rows-fetch.library"; done
}

run_schema_pairs() {
  local pairs=$1 number size
  for size in 1048576 10485760; do
    start_server "$work/server" "$bin/bench-listing-server" "$size"
    for number in $(seq 0 "$pairs"); do pair "$number" "schema-$size" bench-schema "$server_url"; done
    stop_server
  done
}

bench_listing() {
  local pairs=${PAIRS:-9} small large linear rows
  run_listing_pairs "$pairs"
  run_schema_pairs "$pairs"
  # Round by round, so that both sizes met the same load.
  linear=$(paste <(column rows-1000000 library wall) <(column rows-100000 library wall) |
    awk '{printf "%.3f\n", $1 / $2 / 10}' | median)
  small=$(highest rows-10000) large=$(highest rows-1000000)
  {
    heading "Listing of a folder with details and versions, and reading of a schema, $pairs pairs"
    comparison_head library reference
    comparison rows-10000 "ReadDirExt, 10 thousand documents" wall:1.1
    comparison rows-100000 "ReadDirExt, 100 thousand documents" wall:0.9
    comparison rows-1000000 "ReadDirExt, 1 million documents" wall:0.9
    comparison schema-10485760 "schema of 10 MB" wall:1.5
    for rows in 10000 100000 1000000; do
      comparison "rows-$rows-fetch" "ReadDirExt, $rows documents, against fetching alone"
    done
    say
    bound_head
    bound "time per document at 1 million over that at 100 thousand" "$linear" 1.1
    bound "highest resident memory at 1 million documents, KiB" "$large" 24576
    bound "... above that at 10 thousand, KiB" $((large - small)) 1024
    bound "highest resident memory at a schema of 10 MB above that at 1 MB, KiB" \
      $(($(highest schema-10485760) - $(highest schema-1048576))) 1024
    say
    say "Reference of a listing: libcurl fetches the same pages into memory, a JSON reader without a handler reads them."
    say "Fetching alone: libcurl receives the same pages into memory, and nothing reads them."
    say "Reference of a schema: an XML parser without handlers over the same bytes in memory, in pieces of 64 KiB."
  } | publish listing
}

bench_json() {
  local pairs=${PAIRS:-21} number what
  for number in $(seq 0 "$pairs"); do
    for what in events rows document; do pair "$number" "json-$what" bench-json "$what" 10; done
    keep "$number" json-in-situ reference "$bin/bench-json" in-situ events 10
  done
  cp "$work/json-events.library" "$work/json-in-situ.library"
  {
    heading "A page of 10 thousand documents out of its file, ten times, $pairs pairs"
    comparison_head "the library's reader" "RapidJSON's"
    comparison json-events "events are counted" processor:0.6
    comparison json-in-situ "... against RapidJSON in place, with the copy that it needs" processor:0.7
    comparison json-rows "rows of a folder" processor:0.6
    comparison json-document "a document" processor:0.6
  } | publish json
}
