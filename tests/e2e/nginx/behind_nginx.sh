#!/bin/bash
# behind_nginx.sh: vantry-sim listens in the dark; nginx in front of it speaks TLS, wants a password, and serves it below
# a path of its own. vtdirect gets through with the certificate and the password, and not without either of them.
set -euo pipefail
command -v "$NGINX_PROGRAM" >/dev/null || { echo "nginx is not installed; scripts/setup installs it" >&2 && exit 1; }
work=$(mktemp -d)
pids=()
clean_up() {
  local code=$?
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  wait
  [ $code -eq 0 ] || cat "$work"/*.log >&2 || true
  rm -rf "$work"
}
trap clean_up EXIT
export XDG_CONFIG_HOME=$work HOME=$work no_proxy=127.0.0.1 NO_PROXY=127.0.0.1

openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=plm.example \
  -addext 'subjectAltName=IP:127.0.0.1' -keyout "$work/key.pem" -out "$work/certificate.pem" 2>"$work/openssl.log"
printf 'anna:%s\n' "$(openssl passwd -apr1 'four words, one blank')" >"$work/passwords"

# wait_for COMMAND...: until it works, half a minute at most.
wait_for() {
  for _ in $(seq 300); do
    ! "$@" 2>/dev/null || return 0
    sleep 0.1
  done
  echo "gave up waiting for: $*" >&2
  return 1
}
listens() { (exec 3<>"/dev/tcp/127.0.0.1/$1"); }

write_configuration() {
  cat >"$work/nginx.conf" <<CONFIGURATION
daemon off;
master_process off;
pid $work/nginx.pid;
error_log $work/nginx.log;
events {}
http {
  log_format packing '\$uri \$sent_http_content_encoding';
  access_log $work/access packing;
  client_body_temp_path $work/body;
  proxy_temp_path $work/proxy;
  fastcgi_temp_path $work/fastcgi;
  uwsgi_temp_path $work/uwsgi;
  scgi_temp_path $work/scgi;
  server {
    listen 127.0.0.1:$1 ssl;
    ssl_certificate $work/certificate.pem;
    ssl_certificate_key $work/key.pem;
    gzip on;
    gzip_proxied any;
    gzip_min_length 1;
    gzip_types *;
    auth_basic plm;
    auth_basic_user_file $work/passwords;
    location /vt/ { proxy_pass http://127.0.0.1:$2; }
  }
}
CONFIGURATION
}

# The ports are picked at run time; where somebody else was quicker, another one is tried.
for _ in $(seq 20); do
  port=$((20000 + RANDOM % 10000))
  ! listens "$port" 2>/dev/null || continue
  : >"$work/simulator.out"
  "$VANTRY_SIM" --port 0 --data "$work/data" --large 3000000 --prefix /vt \
    --codebase-url "https://127.0.0.1:$port/vt" >"$work/simulator.out" 2>"$work/simulator.log" &
  simulator=$!
  pids+=("$simulator")
  wait_for grep -q 'http://' "$work/simulator.out"
  inner=$(sed -n 's,.*http://127.0.0.1:\([0-9]*\)/.*,\1,p' "$work/simulator.out")
  write_configuration "$port" "$inner"
  "$NGINX_PROGRAM" -p "$work" -c "$work/nginx.conf" -e "$work/nginx.log" &
  nginx=$!
  pids+=("$nginx")
  sleep 0.2
  ! kill -0 "$nginx" 2>/dev/null || break
  kill "$simulator"
  wait "$simulator" || true
done
wait_for listens "$port"
url=https://127.0.0.1:$port/vt/

# expect CODE COMMAND...: the command ends with this exit code.
expect() {
  local wanted=$1 code=0
  shift
  "$@" >"$work/answer" 2>"$work/vtdirect.log" </dev/null || code=$?
  [ "$code" -eq "$wanted" ] || { echo "exit code $code and not $wanted: $*" >&2 && return 1; }
}
get() { "$VTDIRECT" --no-prompt --server "plm=$url" "$@"; }

# A certificate that nobody vouches for, and no password: neither gets through, and no file is made.
export VTDIRECT_USER=anna VTDIRECT_PASSWORD='four words, one blank'
expect 3 get get '//plm/?id=D1001' -o "$work/got"
unset VTDIRECT_USER VTDIRECT_PASSWORD
expect 4 get --ca-file "$work/certificate.pem" get '//plm/?id=D1001' -o "$work/got"
VTDIRECT_USER=anna VTDIRECT_PASSWORD=wrong expect 4 get --ca-file "$work/certificate.pem" get '//plm/?id=D1001' -o "$work/got"
[ ! -e "$work/got" ]

export VTDIRECT_USER=anna VTDIRECT_PASSWORD='four words, one blank'
expect 0 "$VTDIRECT" --no-prompt --ca-file "$work/certificate.pem" check "$url"
grep -q '^supported: yes' "$work/answer"
for document in D1001:10010 D1009:10090; do
  expect 0 get --ca-file "$work/certificate.pem" get "//plm/?id=${document%:*}" -o "$work/got"
  cmp "$work/got" "$work/data/content/${document#*:}"
done
# A listing comes packed, and contents do not.
expect 0 get --ca-file "$work/certificate.pem" ls '//plm/Products/Trekking Bike/Folders/Frame/'
grep -q fork.lxz "$work/answer"
wait_for grep -q '/Folders(.* gzip$' "$work/access"
if grep '/content/streams/.* gzip$' "$work/access"; then
  echo "a content came packed" >&2
  exit 1
fi
# The password is in no message and no trace.
expect 0 get --trace 0123 --ca-file "$work/certificate.pem" get '//plm/?id=D1001' -o "$work/got"
[ -s "$work/vtdirect.log" ]
if grep -F 'four words' "$work/vtdirect.log"; then
  echo "the password was shown" >&2
  exit 1
fi
