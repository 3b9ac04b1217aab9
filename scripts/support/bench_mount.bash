# The mount beside vtdirect ls, rclone's mount and the disk. Sourced by scripts/bench, whose functions and variables it uses.

# seconds COMMAND...: how long the command takes, its output in $work/output.
seconds() {
  local began
  began=$(date +%s%N)
  "$@" >"$work/output" || fail "failed: $*"
  awk -v ns=$(($(date +%s%N) - began)) 'BEGIN {printf "%.6f", ns / 1e9}'
}

stop_mounts() {
  local directory
  for directory in "$work/plm" "$work/dav"; do
    ! grep -q " $directory fuse" /proc/mounts || fusermount3 -uz "$directory"
  done
  [ -z "${dav_pid:-}" ] || kill "$dav_pid" 2>/dev/null || true
  dav_pid=
}

# mount_server [OPTION...]: a fresh mount of the server, with nothing kept.
mount_server() {
  rm -rf "$work/home/.cache"
  mkdir -p "$work/home" "$work/plm"
  HOME=$work/home XDG_CACHE_HOME='' XDG_STATE_HOME='' "$vtdirect" --server "plm=$server_url" mount --refresh 600 "$@" \
    //plm/ "$work/plm" || fail "the mount did not begin"
}

unmount_server() { "$vtdirect" unmount "$work/plm" || fail "the mount did not end"; }

count_files() { find "$1" -type f | wc -l; }

# As count_files, by a find that asks for the size of each.
count_bytes() { find "$1" -type f -printf '%s\n' | wc -l; }

# mount_rclone COUNT: so many small files by WebDAV, mounted by rclone. Fails where there is no rclone.
mount_rclone() {
  command -v rclone >/dev/null || return 1
  local port=$((20000 + RANDOM % 20000))
  mkdir -p "$work/tree" "$work/dav"
  (cd "$work/tree" && seq -f 'part %07g.lxz' "$1" | xargs -d '\n' touch)
  rclone serve webdav "$work/tree" --addr "127.0.0.1:$port" 2>"$work/dav.errors" &
  dav_pid=$!
  for _ in $(seq 100); do
    ! (: <"/dev/tcp/127.0.0.1/$port") 2>/dev/null || break
    sleep 0.1
  done
  rclone mount ":webdav,url='http://127.0.0.1:$port/':" "$work/dav" --read-only --daemon --dir-cache-time 10m \
    2>>"$work/dav.errors"
}

# walks: the seconds of a cold and a warm find, and of vtdirect ls, over a folder of COUNT documents.
bench_mount_walks() {
  local files=$1 pair folder="Products/Bulk/Folders/Parts" cold warm list
  start_server "$work/server" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/mount-walk" \
    --seed "bulk:$files"
  for pair in $(seq "${PAIRS:-5}"); do
    list=$(seconds "$vtdirect" --server "plm=$server_url" ls "//plm/$folder/")
    mount_server
    cold=$(seconds count_files "$work/plm/$folder")
    [ "$(cat "$work/output")" -eq "$files" ] || fail "find saw $(cat "$work/output") files"
    warm=$(seconds count_files "$work/plm/$folder")
    say "$list $cold $warm" >>"$work/mount-walks"
    [ "$pair" -ne 1 ] || say "$(seconds count_bytes "$work/plm/$folder")" \
      "$(seconds count_bytes "$work/plm/$folder")" >"$work/mount-sizes"
    unmount_server
  done
  stop_server
  mount_rclone "$files" || return 0
  say "$(seconds count_files "$work/dav") $(seconds count_files "$work/dav")" \
    "$(seconds count_bytes "$work/dav")" >"$work/mount-rclone"
  [ "$(cat "$work/output")" -eq "$files" ] || fail "find saw $(cat "$work/output") files on the mount by WebDAV"
  stop_mounts
}

# A content that is kept, against a copy of it on the same disk. Neither is in the memory when a run begins.
bench_mount_read() {
  local file="$work/plm/Products/Trekking Bike/Folders/paint shop scan.bin" pair own disk
  start_server "$work/server" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/mount-read" \
    --large "$bytes"
  mount_server
  cp "$file" "$work/copy"
  [ "$(stat -c %s "$work/copy")" -eq "$bytes" ] || fail "the content has $(stat -c %s "$work/copy") bytes"
  cmp "$file" "$work/copy" || fail "the bytes differ"
  for pair in $(seq "${PAIRS:-5}"); do
    drop_pages "$work/copy" "$file" "$work"/home/.cache/vtdirect/contents/*/*
    [ $((pair % 2)) -eq 0 ] || own=$(seconds dd if="$file" of=/dev/null bs=1M status=none)
    disk=$(seconds dd if="$work/copy" of=/dev/null bs=1M status=none)
    [ $((pair % 2)) -ne 0 ] || own=$(seconds dd if="$file" of=/dev/null bs=1M status=none)
    say "$own $disk" >>"$work/mount-read-times"
  done
  unmount_server
  stop_server
}

# drop_pages FILE...: the kernel forgets what it holds of these files, and of no others.
drop_pages() {
  local file
  sync
  for file in "$@"; do dd if="$file" iflag=nocache count=0 status=none; done
}

read_small() {
  find "$work/plm/Products/Bulk/Folders/Parts" -type f -print0 | xargs -0 -P 8 -n 25 cat | wc -c
}

# A thousand small files that nobody has read yet, by eight programs, from a server that takes 50 ms to answer.
bench_mount_small() {
  local pair
  start_server "$work/server" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/mount-small" \
    --seed bulk:1000,size=4096-4096 --latency 50
  for pair in $(seq "${PAIRS:-3}"); do
    mount_server
    seconds read_small >>"$work/mount-small-times"
    say >>"$work/mount-small-times"
    unmount_server
  done
  stop_server
}

bench_mount() {
  local ratio cold warm sizes files=${COUNT:-100000}
  vtdirect=$root/build/release/hosts/cli/vtdirect
  (: <>/dev/fuse) 2>/dev/null || fail "there is no /dev/fuse that can be opened"
  rm -f "$work"/mount-*
  bench_mount_walks "$files"
  bench_mount_read
  bench_mount_small
  {
    say "The mount ($(date -u +%F), load before: $load_before)"
    say
    say "| what | seconds, median |"
    say "| --- | --- |"
    say "| \`vtdirect ls\`, a folder of $files documents | $(awk '{print $1}' "$work/mount-walks" | median) |"
    say "| \`find\`, cold | $(awk '{print $2}' "$work/mount-walks" | median) |"
    say "| \`find\`, warm | $(awk '{print $3}' "$work/mount-walks" | median) |"
    read -r cold warm <"$work/mount-sizes"
    say "| \`find\` that asks for every size, first time, once | $cold |"
    say "| the same again | $warm |"
    if [ -s "$work/mount-rclone" ]; then
      read -r cold warm sizes <"$work/mount-rclone"
      say "| \`find\` on rclone's mount of as many files by WebDAV, cold, once | $cold |"
      say "| \`find\` on rclone's mount, warm, once | $warm |"
      say "| \`find\` on rclone's mount that asks for every size, warm, once | $sizes |"
    else
      say "| rclone's mount | not measured: there is no rclone here |"
    fi
    say "| 1,000 files of 4 KiB cold, 8 readers, 50 ms | $(grep . "$work/mount-small-times" | median) |"
    say
    ratio=$(awk '{print $2 / $1}' "$work/mount-read-times" | median)
    say "| what | speed over that of the disk | quartiles | target | met |"
    say "| --- | --- | --- | --- | --- |"
    say "| a kept content of $bytes bytes, in one go | $ratio |" \
      "$(awk '{print $2 / $1}' "$work/mount-read-times" | quartiles) | 0.8 | $(judge 0.8 "$ratio") |"
  } | publish mount
}
