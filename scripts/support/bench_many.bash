# Many documents at once: vtdirect beside rclone, which fetches the same files by WebDAV through a relay that waits as long
# as the server does. Sourced by scripts/bench, whose functions and variables it uses.

many_documents=${DOCUMENTS:-1000}
many_folders=20
many_latency=50
# So many folders are listed: those, the product's root, and the one that the address names.
many_listed=$((many_folders + 1))

# In a home of their own, without anything that is kept from before.
many_vtdirect() {
  HOME=$work/many-home XDG_STATE_HOME='' XDG_CACHE_HOME='' XDG_CONFIG_HOME='' \
    "$vtdirect" --quiet --server "plm=$server_url" "$@"
}
many_in() { (cd "$work/folder" && many_vtdirect "$@"); }

# requests: how many the server has answered so far.
many_requests() { grep -c '"method"' "$work/many-log" || true; }

# The same files by WebDAV, and the relay in front of them. Sets $dav_url.
many_serve_dav() {
  local port=$((20000 + RANDOM % 20000))
  rclone serve webdav "$work/many-plain" --addr "127.0.0.1:$port" 2>"$work/dav.errors" &
  dav_pid=$!
  for _ in $(seq 100); do
    ! (: <"/dev/tcp/127.0.0.1/$port") 2>/dev/null || break
    sleep 0.1
  done
  python3 "$root/scripts/support/delaying_relay.py" "$port" "$many_latency" >"$work/relay" &
  relay_pid=$!
  for _ in $(seq 100); do
    dav_url=$(grep -o 'http://[^ ]*' "$work/relay" || true)
    [ -z "$dav_url" ] || return 0
    sleep 0.1
  done
  fail "the relay did not begin"
}
many_stop_dav() {
  [ -z "${relay_pid:-}" ] || kill "$relay_pid" 2>/dev/null || true
  [ -z "${dav_pid:-}" ] || kill "$dav_pid" 2>/dev/null || true
  relay_pid='' dav_pid=''
}
many_rclone() { rclone --config /dev/null --transfers 8 --checkers 8 "$@"; }

many_get() {
  rm -rf "$work/many-got" && mkdir "$work/many-got"
  many_vtdirect get -r --parallel 8 '//plm/Products/Bulk/Folders/' -o "$work/many-got" --force
}
many_copy() {
  rm -rf "$work/many-copied"
  many_rclone copy ":webdav,url='$dav_url':" "$work/many-copied"
}

# The most connections that the server had from one run of a command.
many_connections() {
  local before
  before=$(wc -l <"$work/many-log")
  "$@"
  tail -n "+$((before + 1))" "$work/many-log" | grep -o '"port":[0-9]*' | sort -u | wc -l
}

# many_pair NUMBER NAME OURS THEIRS: times two functions, which take turns in going first, and adds a line to $work/NAME.
many_pair() {
  local ours theirs
  if [ $(($1 % 2)) -eq 0 ]; then
    ours=$(seconds "$3") && theirs=$(seconds "$4")
  else
    theirs=$(seconds "$4") && ours=$(seconds "$3")
  fi
  say "$ours $theirs" >>"$work/$2"
}

bench_many_gets() {
  local pair
  for pair in $(seq "${PAIRS:-3}"); do many_pair "$pair" many-gets many_get many_copy; done
  [ "$(find "$work/many-got" -type f | wc -l)" -eq "$many_documents" ] || fail "not all documents have come"
  many_connections many_get >"$work/many-connections"
}

many_pull() { many_in pull --parallel 8; }
many_check() { many_rclone check ":webdav,url='$dav_url':" "$work/many-copied" 2>"$work/check"; }
many_st() { many_in st --parallel 8; }
many_tree() { many_vtdirect tree --parallel 8 '//plm/Products/Bulk/Folders/'; }

bench_many_folders() {
  local pair before
  many_vtdirect clone --parallel 8 '//plm/Products/Bulk/Folders/' "$work/folder" >"$work/output"
  for pair in $(seq "${QUICK_PAIRS:-9}"); do
    before=$(many_requests)
    many_pair "$pair" many-pulls many_pull many_check
    say "$(($(many_requests) - before))" >>"$work/many-pull-requests"
  done
}

bench_many_st() {
  local pair file
  find "$work/folder" -name '*.lxz' >"$work/many-files"
  sed -n 1,20p "$work/many-files" >"$work/many-modified"
  while read -r file; do say changed >>"$file"; done <"$work/many-modified"
  [ "$(many_st | wc -l)" -eq 20 ] || fail "st does not tell of the 20 files that were modified"
  for pair in $(seq "${QUICK_PAIRS:-9}"); do many_pair "$pair" many-sts many_st many_tree; done
}

# Eight programs that keep what they have saved in one place: each file that was saved is known as such afterwards.
bench_many_side_by_side() {
  local number pids=()
  for number in $(seq 8); do
    mkdir "$work/side-$number"
    many_vtdirect get -r --parallel 1 "//plm/Products/Bulk/Folders/$(ls "$work/many-got/Folders" | sed -n "${number}p")/" \
      -o "$work/side-$number" &
    pids+=($!)
  done
  for number in "${pids[@]}"; do wait "$number" || fail "one of eight programs failed"; done
  find "$work"/side-* -type f | wc -l >"$work/many-side-files"
  rm -rf "$work/records" && cat "$work"/many-home/.local/state/vtdirect/fetched/* | cut -f 1 | grep -c "^$work/side-" \
    >"$work/many-side-records" || true
}

# many_row TITLE NAME LIMIT: the pairs of $work/NAME as a line of the table. What it finds goes into the history, which
# keeps runs of fewer documents apart.
many_row() {
  local first ratio third name=$2
  read -r first ratio third < <(awk '{print $1 / $2}' "$work/$2" | quartiles)
  [ "$many_documents" -eq 1000 ] || name+=-$many_documents
  remember "$name" wall "$first" "$ratio" "$third"
  say "| $1 | $(awk '{print $1}' "$work/$2" | median) | $(awk '{print $2}' "$work/$2" | median) |" \
    "$ratio ($first to $third) | $3 | $(judge "$ratio" "$3") |"
}

bench_many() {
  local per_folder
  vtdirect=$root/build/release/hosts/cli/vtdirect
  command -v rclone >/dev/null || fail "there is no rclone here (apt-get install rclone)"
  rm -rf "$work"/many-* "$work/folder" && mkdir "$work/many-home"
  start_server "$work/many-server" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/many-data" \
    --log "$work/many-log" \
    --seed "bulk:$many_documents,folders=$many_folders,depth=1,size=4096-4096" --latency "$many_latency"
  many_get
  cp -r "$work/many-got" "$work/many-plain"
  many_serve_dav
  bench_many_gets
  bench_many_folders
  bench_many_st
  bench_many_side_by_side
  many_stop_dav
  stop_server
  per_folder=$(median <"$work/many-pull-requests" | awk -v n="$many_listed" '{printf "%.2f", $1 / n}')
  {
    heading "$many_documents documents of 4 KiB in $many_folders folders, $many_latency ms a request, \
${PAIRS:-3} pairs of gets and ${QUICK_PAIRS:-9} of the others"
    say "| what | vtdirect, s | beside, s | ratio (quartiles) | at most | met |"
    say "| --- | --- | --- | --- | --- | --- |"
    many_row "\`get -r --parallel 8\`, beside rclone with 8 transfers" many-gets 2.2
    many_row "\`pull\` with nothing changed, beside \`rclone check\`" many-pulls 1.2
    many_row "\`st\` with 20 files modified, beside the listings alone" many-sts 1.5
    say
    bound_head
    bound "connections of \`get -r --parallel 8\`" "$(cat "$work/many-connections")" 10
    bound "requests a folder of \`pull\` with nothing changed" "$per_folder" 2
    bound "records that 8 programs side by side have lost" \
      "$(($(cat "$work/many-side-files") - $(cat "$work/many-side-records")))" 0
  } | publish many
}
