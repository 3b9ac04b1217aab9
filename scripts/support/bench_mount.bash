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

# The process of our mount, which it tells itself.
mount_process() { getfattr --only-values -n user.vantry.mount "$work/plm" 2>/dev/null | cut -d ' ' -f 1; }

# processor PROCESS: the processor seconds that it has used, in steps of the kernel's clock.
processor() { sed 's/.*) //' "/proc/$1/stat" | awk -v hz="$(getconf CLK_TCK)" '{print ($12 + $13) / hz}'; }

# walk DIR PROCESS COUNT: "SECONDS PROCESSOR-SECONDS" of a find over so many files, the second of the mount's process.
walk() {
  local before elapsed
  before=$(processor "$2")
  elapsed=$(seconds count_files "$1")
  [ "$(cat "$work/output")" -eq "$3" ] || fail "find saw $(cat "$work/output") files in $1"
  say "$elapsed" "$(awk -v a="$before" -v b="$(processor "$2")" 'BEGIN {print b - a}')"
}

# copy_tree FOLDER: the files of a folder of the mount, with their names and sizes, below $work/tree. Its documents have
# one length, which the first of them tells.
copy_tree() {
  local length
  mkdir -p "$work/tree/$1"
  (cd "$work/plm/$1" && find . -type f) >"$work/names"
  length=$(stat -c %s "$work/plm/$1/$(head -1 "$work/names")")
  (cd "$work/tree/$1" && xargs -d '\n' truncate -s "$length" <"$work/names")
}

# serve_tree: $work/tree by WebDAV, at $dav_url, looked through once. Fails where there is no rclone.
serve_tree() {
  command -v rclone >/dev/null || return 1
  local port=$((20000 + RANDOM % 20000))
  dav_url=http://127.0.0.1:$port/
  rclone --config /dev/null serve webdav "$work/tree" --addr "127.0.0.1:$port" --dir-cache-time 1h 2>"$work/dav.errors" &
  dav_pid=$!
  for _ in $(seq 100); do
    ! (: <"/dev/tcp/127.0.0.1/$port") 2>/dev/null || break
    sleep 0.1
  done
  rclone --config /dev/null size ":webdav,url='$dav_url':" >/dev/null 2>>"$work/dav.errors"
}

# mount_rclone: a fresh mount of that, with nothing kept. $rclone_pid is its process.
mount_rclone() {
  mkdir -p "$work/dav"
  rclone --config /dev/null mount ":webdav,url='$dav_url':" "$work/dav" --read-only --dir-cache-time 10m \
    2>>"$work/dav.errors" &
  rclone_pid=$!
  for _ in $(seq 100); do
    ! grep -q " $work/dav fuse" /proc/mounts || return 0
    sleep 0.1
  done
  fail "rclone's mount did not begin"
}

unmount_rclone() {
  fusermount3 -u "$work/dav"
  wait "$rclone_pid" || true
}

# walk_ours FOLDER COUNT: adds "COLD PROCESSOR WARM PROCESSOR" of a fresh mount.
walk_ours() {
  local process cold warm
  mount_server
  process=$(mount_process)
  cold=$(walk "$work/plm/$1" "$process" "$2")
  warm=$(walk "$work/plm/$1" "$process" "$2")
  say "$cold $warm" >>"$work/mount-ours"
  [ -e "$work/mount-sizes-ours" ] ||
    say "$(seconds count_bytes "$work/plm/$1")" "$(seconds count_bytes "$work/plm/$1")" >"$work/mount-sizes-ours"
  unmount_server
}

walk_rclone() {
  local cold warm
  mount_rclone
  cold=$(walk "$work/dav/$1" "$rclone_pid" "$2")
  warm=$(walk "$work/dav/$1" "$rclone_pid" "$2")
  say "$cold $warm" >>"$work/mount-rclone"
  [ -e "$work/mount-sizes-rclone" ] ||
    say "$(seconds count_bytes "$work/dav/$1")" "$(seconds count_bytes "$work/dav/$1")" >"$work/mount-sizes-rclone"
  unmount_rclone
}

# The seconds of a cold and a warm find over a folder of COUNT documents, and over the same tree by WebDAV; the two take
# turns in going first. And those of vtdirect ls.
bench_mount_walks() {
  local files=$1 pair folder="Products/Bulk/Folders/Parts" walks=(walk_ours)
  start_server "$work/server" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/mount-walk" \
    --seed "bulk:$files"
  mount_server
  copy_tree "$folder"
  unmount_server
  ! serve_tree || walks=(walk_ours walk_rclone)
  for pair in $(seq "${PAIRS:-5}"); do
    seconds "$vtdirect" --server "plm=$server_url" ls "//plm/$folder/" >>"$work/mount-list"
    say >>"$work/mount-list"
    [ $((pair % 2)) -eq 1 ] || [ ${#walks[@]} -eq 1 ] || "${walks[1]}" "$folder" "$files"
    walk_ours "$folder" "$files"
    [ $((pair % 2)) -eq 0 ] || [ ${#walks[@]} -eq 1 ] || "${walks[1]}" "$folder" "$files"
  done
  stop_mounts
  stop_server
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

# mount_column FILE NUMBER: the median of one column of $work/mount-FILE.
mount_column() { awk -v c="$2" '{print $c}' "$work/mount-$1" | median; }

# mount_ratio NUMBER: "MEDIAN (FIRST to THIRD)" of what a column of ours is beside that of rclone; "-" for what was too
# short for the kernel's clock.
mount_ratio() {
  paste -d ' ' "$work/mount-ours" "$work/mount-rclone" |
    awk -v c="$1" '$c > 0 && $(c + 4) > 0 {printf "%.4f\n", $c / $(c + 4)}' | quartiles |
    awk '{print $2 " (" $1 " to " $3 ")"} END {if (!NR) print "-"}'
}

# mount_walk_row TITLE COLUMN: a line beside rclone; the column after it has the processor seconds.
mount_walk_row() {
  say "| $1 | $(mount_column ours "$2") | $(mount_column rclone "$2") | $(mount_ratio "$2") |" \
    "$(mount_column ours $(($2 + 1))) | $(mount_column rclone $(($2 + 1))) | $(mount_ratio $(($2 + 1))) |"
}

mount_walk_rows() {
  local ours again theirs theirs_again
  read -r ours again <"$work/mount-sizes-ours"
  if [ -s "$work/mount-rclone" ]; then
    read -r theirs theirs_again <"$work/mount-sizes-rclone"
    say "| over the same tree | ours, s | rclone, s | time: ratio (quartiles)" \
      "| ours, processor s | rclone | ratio (quartiles) |"
    say "| --- | --- | --- | --- | --- | --- | --- |"
    mount_walk_row "\`find\`, cold" 1
    mount_walk_row "\`find\`, warm" 3
    say "| \`find\` that asks for every size, after that, once | $ours | $theirs | | | | |"
    say "| the same again | $again | $theirs_again | | | | |"
  else
    say "| there is no rclone here | seconds, median |"
    say "| --- | --- |"
    say "| \`find\`, cold | $(mount_column ours 1) |"
    say "| \`find\`, warm | $(mount_column ours 3) |"
    say "| \`find\` that asks for every size, after that, once | $ours |"
    say "| the same again | $again |"
  fi
}

bench_mount() {
  local ratio files=${COUNT:-100000}
  vtdirect=$root/build/release/hosts/cli/vtdirect
  (: <>/dev/fuse) 2>/dev/null || fail "there is no /dev/fuse that can be opened"
  command -v getfattr >/dev/null || fail "there is no getfattr (apt-get install attr)"
  rm -f "$work"/mount-*
  bench_mount_walks "$files"
  bench_mount_read
  bench_mount_small
  {
    say "The mount ($(date -u +%F), load before: $load_before)"
    say
    mount_walk_rows
    say
    say "| what | seconds, median |"
    say "| --- | --- |"
    say "| \`vtdirect ls\`, that folder of $files documents | $(grep . "$work/mount-list" | median) |"
    say "| 1,000 files of 4 KiB cold, 8 readers, 50 ms | $(grep . "$work/mount-small-times" | median) |"
    say
    ratio=$(awk '{print $2 / $1}' "$work/mount-read-times" | median)
    say "| what | speed over that of the disk | quartiles | target | met |"
    say "| --- | --- | --- | --- | --- |"
    say "| a kept content of $bytes bytes, in one go | $ratio |" \
      "$(awk '{print $2 / $1}' "$work/mount-read-times" | quartiles) | 0.8 | $(judge 0.8 "$ratio") |"
  } | publish mount
}
