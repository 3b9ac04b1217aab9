# Parts of scripts/bench: a large content into a file and out of one. Sourced by scripts/bench.

# timed_download FILE COMMAND...: each run writes a new file on a disk that has nothing left to write.
timed_download() {
  local file=$1
  shift
  rm -f "$file"
  sync
  "$bin/bench-run" 1 "$@"
}

# What "bench_download" runs in turns, after the name of the mode.
download() {
  case $1 in
    library) timed_download "$work/a" "$bin/bench-download" "$server_url" "$work/a" ;;
    reference) timed_download "$work/b" curl -s -o "$work/b" "${server_url}content" ;;
  esac
}

# turns NUMBER NAME FUNCTION: "FUNCTION library" and "FUNCTION reference", one after the other, as "pair" does.
turns() {
  local mode order=(library reference)
  [ $(($1 % 2)) -eq 0 ] || order=(reference library)
  for mode in "${order[@]}"; do keep "$1" "$2" "$mode" "$3" "$mode"; done
}

bench_download() {
  local pairs=${PAIRS:-9} name=download-$bytes number
  start_server "$work/server" "$bin/bench-server" "$bytes"
  for number in $(seq 0 "$pairs"); do
    turns "$number" "$name" download
    # The first pair shows that both fetched the same.
    [ "$number" -gt 0 ] || { cmp "$work/a" "$work/b" && [ "$(stat -c %s "$work/a")" -eq "$bytes" ]; } ||
      fail "the downloads differ"
  done
  stop_server
  rm -f "$work/a" "$work/b"
  {
    heading "Download of $bytes bytes into a file, $pairs pairs"
    comparison_head GetFile curl
    comparison "$name" "a download" wall:1.1
    say
    bound_head
    bound "highest resident memory, KiB" "$(highest "$name")" 24576
  } | publish download
}

# timed_upload COMMAND...: each run has a disk that has nothing left to write, and leaves no temporary file. It follows
# one of the same command that is not timed: on a virtual machine memory that was free for a while belongs to the host
# again, and fetching a gigabyte of it back takes several times as long as the upload.
timed_upload() {
  sync
  TMPDIR=$work/staging "$@" >/dev/null || fail "failed: $*"
  sync
  TMPDIR=$work/staging "$bin/bench-run" 1 "$@"
  [ -z "$(ls -A "$work/staging")" ] || fail "left behind: $(ls -A "$work/staging")"
}

# What "bench_upload" runs in turns; the answer of the reference is the receipt. The library's tells of its parts, too.
upload() {
  case $1 in
    library)
      timed_upload "$bin/bench-upload" "$server_url" "$work/source" "$work/parts"
      say "$("$bin/bench-run" 1 cat "$work/source" | awk '{print $1}') $(cat "$work/parts")" >>"$work/upload.parts"
      ;;
    reference) timed_upload curl -sf -F "file=@$work/source" "${server_url}upload" ;;
    staged) timed_upload bash -c "$copy_and_send" "$work/source" "$work/staging/body" "${server_url}upload" ;;
  esac
}

# The least that an upload takes which copies the file first: a bare copy, curl that sends it, its removal.
copy_and_send='dd if="$0" of="$1" bs=1M status=none && curl -sf -F "file=@$1" "$2" && rm "$1"'

# upload_parts: how the time of the library's uploads divides, as lines of a table.
upload_parts() {
  say "| part of the library's time | share (median) | does the reference have it |"
  say "| --- | --- | --- |"
  awk '{all = $2 + $3 + $4; print $1 / all, ($2 - $1) / all, $3 / all, $4 / all}' "$work/upload.parts" >"$work/shares"
  local part number=0 parts=("reading the source|yes" "writing the body, and the requests before it|no"
    "sending, with reading the body|yes, out of the source" "removing the body, and the requests after it|no")
  for part in "${parts[@]}"; do
    number=$((number + 1))
    say "| ${part%|*} | $(awk -v n=$number '{print 100 * $n}' "$work/shares" | median | xargs printf '%.0f') % | ${part#*|} |"
  done
}

bench_upload() {
  local pairs=${PAIRS:-9} name=upload-$bytes number
  head -c "$bytes" /dev/urandom >"$work/source"
  mkdir "$work/staging"
  start_server "$work/server" "$bin/bench-upload-server" "$work/source"
  # The first pair warms up, and shows that both send the whole file: the server refuses what differs.
  curl -sf "${server_url}compare"
  for number in $(seq 0 "$pairs"); do
    turns "$number" "$name" upload
    keep "$number" "$name-staged" reference upload staged
    [ "$number" -gt 0 ] || curl -sf "${server_url}swallow"
  done
  stop_server
  sed -i 1d "$work/upload.parts"
  cp "$work/$name.library" "$work/$name-staged.library"
  {
    heading "Upload of $bytes bytes out of a file, $pairs pairs"
    comparison_head Upload "curl -F"
    comparison "$name" "an upload" wall:1.3
    comparison "$name-staged" "... against dd into a temporary file and curl -F of that"
    say
    bound_head
    bound "highest resident memory, KiB" "$(highest "$name")" 24576
    say
    upload_parts
    say
    say "No run left a temporary file."
  } | publish upload
  rm -rf "$work/source" "$work/staging"
}
