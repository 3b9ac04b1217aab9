# vantry-sim beside nginx. Sourced by scripts/bench, whose functions and variables it uses.

# processor_ticks PID: what a process and its children that live have used of the processors, in ticks.
processor_ticks() {
  local id total=0
  for id in "$1" $(cat "/proc/$1/task/$1/children"); do
    total=$((total + $(sed 's/.*) //' "/proc/$id/stat" | awk '{print $12 + $13}')))
  done
  say "$total"
}

# start_file_server FOLDER: serves a folder as nginx does by itself, without a log. Sets `file_server_pid` and `file_server_port`.
start_file_server() {
  file_server_port=$((20000 + RANDOM % 20000))
  cat >"$work/nginx.conf" <<EOF
worker_processes auto;
pid $work/nginx.pid;
error_log $work/nginx.errors;
events { worker_connections 1024; }
http {
  access_log off;
  sendfile on;
  tcp_nopush on;
  keepalive_requests 1000000000;
  default_type application/json;
  client_body_temp_path $work/nginx-body;
  proxy_temp_path $work/nginx-proxy;
  fastcgi_temp_path $work/nginx-fastcgi;
  uwsgi_temp_path $work/nginx-uwsgi;
  scgi_temp_path $work/nginx-scgi;
  server { listen 127.0.0.1:$file_server_port; root $1; }
}
EOF
  chmod 755 "$work"
  "$(command -v nginx || echo /usr/sbin/nginx)" -p "$work" -c "$work/nginx.conf" -g 'daemon off;' &
  file_server_pid=$!
  for _ in $(seq 100); do
    (: <"/dev/tcp/127.0.0.1/$file_server_port") 2>/dev/null && return
    sleep 0.1
  done
  fail "nginx did not start: $(cat "$work/nginx.errors")"
}

stop_file_server() {
  [ -n "${file_server_pid:-}" ] || return 0
  kill "$file_server_pid" 2>/dev/null || true
  wait "$file_server_pid" 2>/dev/null || true
  file_server_pid=
}

# ask SERVER-PID PORT PATH CONNECTIONS REQUESTS: a run, with the processor time of the server and not of the client.
ask() {
  local server=$1 before seconds
  shift
  before=$(processor_ticks "$server")
  seconds=$("$bin/bench-sim" "$@" | awk '{print $1}')
  [ -n "$seconds" ] || fail "bench-sim failed: $*"
  say "$seconds $(awk -v t=$(($(processor_ticks "$server") - before)) -v h="$(getconf CLK_TCK)" \
    'BEGIN {printf "%.2f", t / h}') - -"
}

# speed NAME MODE REQUESTS: requests a second, by the median of the runs.
speed() { awk -v n="$3" -v s="$(column "$1" "$2" wall | median)" 'BEGIN {printf "%.0f", n / s}'; }

# How long the first answer takes, which is made from the database: no two ask the same.
first_answers() {
  local top
  for top in $(seq 9991 10000); do
    curl -s -o /dev/null -w '%{time_total}\n' "${server_url}servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?%24top=$top"
  done | quartiles
}

bench_sim() {
  local pairs=${PAIRS:-9} number connections kind paths=() requests=() port
  local document=servlet/rest/v1/dkm/documents/D1000001
  local rows=servlet/odata/v1/DynamicDocMgmt/DynamicDocuments
  start_server "$work/server" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/sim" --seed bulk:10000
  port=$(sed 's/.*:\([0-9]*\).*/\1/' <<<"$server_url")
  mkdir -p "$work/html"
  # bench-sim sends this Host, which answers repeat.
  curl -sf -H 'Host: 127.0.0.1' "$server_url$document" -o "$work/html/document"
  curl -sf -H 'Host: 127.0.0.1' "$server_url$rows" -o "$work/html/rows"
  [ "$(grep -o '"ID":' "$work/html/rows" | wc -l)" -ge 10000 ] || fail "there are no ten thousand rows"
  start_file_server "$work/html"
  paths=("/$document /document" "/$rows /rows")
  requests=("${COUNT:-20000}" 200)
  for number in $(seq 0 "$pairs"); do
    for kind in 0 1; do
      for connections in 1 8 64; do
        sim_pair "$number" "sim-$kind-$connections" ${paths[kind]} "$connections" "${requests[kind]}"
      done
    done
  done
  {
    heading "vantry-sim beside nginx with the same bytes on the disk, $pairs pairs"
    comparison_head vantry-sim nginx
    for connections in 1 8 64; do
      comparison "sim-0-$connections" "a document ($(stat -c %s "$work/html/document") bytes), $connections connections" wall:3
    done
    for connections in 1 8 64; do
      comparison "sim-1-$connections" \
        "a page of 10,000 rows ($(stat -c %s "$work/html/rows") bytes), $connections connections" wall:3
    done
    say
    say "| requests a second, with connections: | vantry-sim | nginx |"
    say "| --- | --- | --- |"
    for kind in 0 1; do
      for connections in 1 8 64; do
        say "| $(cut -d / -f 3 <<<"${paths[kind]}"), $connections | $(speed "sim-$kind-$connections" library "${requests[kind]}")" \
          "| $(speed "sim-$kind-$connections" reference "${requests[kind]}") |"
      done
    done
    say
    say "An answer is made once until something is written. The first of such a page takes (quartiles):" \
      "$(first_answers) s."
  } | publish sim
  stop_file_server
  stop_server
}

# sim_pair NUMBER NAME PATH NGINX-PATH CONNECTIONS REQUESTS: both, one after the other. Pair 0 shows that both send as
# many bytes, and is not kept.
sim_pair() {
  local number=$1 name=$2 order=(library reference) mode
  [ $((number % 2)) -eq 0 ] || order=(reference library)
  if [ "$number" -eq 0 ]; then
    [ "$("$bin/bench-sim" "$port" "$3" "$5" 10 | awk '{print $2}')" -eq \
      "$("$bin/bench-sim" "$file_server_port" "$4" "$5" 10 | awk '{print $2}')" ] || fail "the two send different bodies"
    return
  fi
  for mode in "${order[@]}"; do
    case $mode in
      library) keep "$number" "$name" library ask "$server_pid" "$port" "$3" "$5" "$6" ;;
      reference) keep "$number" "$name" reference ask "$file_server_pid" "$file_server_port" "$4" "$5" "$6" ;;
    esac
  done
}
