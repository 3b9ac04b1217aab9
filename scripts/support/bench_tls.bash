# Part of scripts/bench: many small contents over TLS. nginx serves them from files; its certificate is made for the run
# and is at the end of a copy of the system's, so that a client reads all of them.

tls_pid=
tls_contents=

# run_tls MODE COUNT: one run of the benchmark's program. Contents go into memory: what a disk takes for a new file is
# more than all the rest, and no matter of connections.
run_tls() {
  rm -f "$tls_contents"/*
  "$bin/bench-tls" "$1" "$tls_url" "$2" "$work/tls/all.pem" "$tls_contents" || fail "bench-tls $1 failed"
}

# tls_turn MODE: one run, of as many contents as "bench_tls" wants.
tls_turn() { run_tls "$1" "$contents"; }

stop_tls_server() {
  [ -z "$tls_contents" ] || rm -rf "$tls_contents"
  tls_contents=
  stop_nginx
}

stop_nginx() {
  [ -n "$tls_pid" ] || return 0
  kill "$tls_pid" 2>/dev/null || true
  wait "$tls_pid" 2>/dev/null || true
  tls_pid=
}

write_tls_configuration() {
  cat >"$work/tls/nginx.conf" <<CONFIGURATION
daemon off;
master_process off;
pid $work/tls/nginx.pid;
error_log $work/tls/error.log;
events {}
http {
  log_format number '\$connection';
  access_log $work/tls/connections number;
  client_body_temp_path $work/tls/body;
  proxy_temp_path $work/tls/proxy;
  fastcgi_temp_path $work/tls/fastcgi;
  uwsgi_temp_path $work/tls/uwsgi;
  scgi_temp_path $work/tls/scgi;
  server {
    listen 127.0.0.1:$1 ssl;
    ssl_certificate $work/tls/certificate.pem;
    ssl_certificate_key $work/tls/key.pem;
    keepalive_requests 1000000;
    tcp_nodelay on;
    root $work/tls/files;
    location /servlet/rest/v1/dkm/documents/ { default_type application/json; try_files /document.json =404; }
  }
}
CONFIGURATION
}

# start_tls_server: sets `tls_url`. Where somebody else has the port, another one is tried.
start_tls_server() {
  local port nginx
  nginx=$(command -v nginx || echo /usr/sbin/nginx)
  mkdir -p "$work/tls/files"
  tls_contents=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "$work")" vtdirect-bench.XXXXXX)
  openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=vtdirect-bench \
    -addext 'subjectAltName=IP:127.0.0.1' -keyout "$work/tls/key.pem" -out "$work/tls/certificate.pem" \
    2>"$work/tls/openssl.log" || fail "openssl made no certificate"
  cat /etc/ssl/certs/ca-certificates.crt "$work/tls/certificate.pem" >"$work/tls/all.pem"
  head -c 4096 /dev/urandom >"$work/tls/files/content"
  start_server "$work/server" "$bin/bench-server" 4096
  curl -s "${server_url}servlet/rest/v1/dkm/documents/D1" >"$work/tls/document"
  for _ in $(seq 20); do
    port=$((20000 + RANDOM % 10000))
    tls_url=https://127.0.0.1:$port/
    sed "s,${server_url},$tls_url,g" "$work/tls/document" >"$work/tls/files/document.json"
    write_tls_configuration "$port"
    "$nginx" -p "$work/tls" -c "$work/tls/nginx.conf" -e "$work/tls/error.log" &
    tls_pid=$!
    for _ in $(seq 50); do
      ! curl -s --cacert "$work/tls/certificate.pem" -o "$work/output" "${tls_url}content" || break 2
      kill -0 "$tls_pid" 2>/dev/null || break
      sleep 0.1
    done
    stop_nginx
  done
  [ -n "$tls_pid" ] || fail "nginx did not start: $(cat "$work/tls/error.log")"
  stop_server
}

# tls_connections MODE COUNT: the TCP connections of one run.
tls_connections() {
  local before
  before=$(wc -l <"$work/tls/connections")
  run_tls "$1" "$2" >"$work/output"
  # The log is written when a request is done, which the client may know a moment earlier.
  sleep 0.2
  tail -n "+$((before + 1))" "$work/tls/connections" | sort -u | wc -l
}

bench_tls() {
  local pairs=${PAIRS:-15} contents=${COUNT:-200} number pages connections fresh
  start_tls_server
  for number in $(seq 0 "$pairs"); do turns "$number" tls tls_turn; done
  connections=$(tls_connections library "$contents")
  # 400 connections: two requests for each of 200 contents.
  fresh=$(tls_connections fresh 200)
  fresh=$(awk -v n="$fresh" '{printf "%.3f ms for each of %d", 1000 * $2 / n, n}' "$work/output")
  stop_tls_server
  start_server "$work/server" "$bin/bench-listing-server" 0 1000
  pages=$(connections_of "$bin/bench-threads" listing "$server_url" 1 1 50000)
  stop_server
  {
    heading "$contents contents of 4 KiB over TLS with all of the system's certificates, $pairs pairs"
    comparison_head GetFile "one handle of libcurl"
    comparison tls "contents over TLS" wall:1.3 processor:1.3
    say
    bound_head
    bound "TCP connections" "$connections" 2
    bound "TCP connections of listings of 50 pages, twice" "$pages" 2
    say
    say "Processor time with a new connection for each request: $fresh."
  } | publish tls
}
