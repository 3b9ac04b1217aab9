# A server under control, as a host's tests have it. Sourced by scripts/demo, whose functions and variables it uses.

# control METHOD PATH [BODY]: asks the admin port, as a person would by curl, and prints the answer.
control() {
  local line="   \$ curl -X $1 ${admin}$2" answer
  [ $# -lt 3 ] || line+=" -d '$3'"
  say "$line"
  answer=$(curl -sf -X "$1" "$admin$2" ${3:+-d "$3"}) || fail "the admin port refused $1 $2"
  [ -z "$answer" ] || cut -c 1-150 <<<"   $answer"
}

# fails_with CODE COMMAND...: a command of vtdirect that must end with that exit code.
fails_with() {
  local expected=$1 code=0
  shift
  run "$@" || code=$?
  say "   Exit code $code."
  [ "$code" -eq "$expected" ] || fail "expected exit code $expected"
}

show_testing() {
  local fork='//plm/?id=D1001' asked
  next "Start a server for tests: it has a page for people, and an admin port for programs."
  start_server "$work/server-testing" "$root/build/release/simulator/vantry-sim" --port 0 --admin-port 0 \
    --data "$work/testing-data"
  read -r _ _ _ server_url _ _ admin <"$work/server-testing"
  printf '[servers]\nplm = %s\n' "$server_url" >"$work/vtdirect/config"
  run browse-url "$fork"
  curl -sf "${server_url}app/" | grep -q '<title>' || fail "there is no page at ${server_url}app/"
  curl -sf "$admin" | grep -q '<title>' || fail "there is no page at $admin"
  say "   A browser shows the repository at ${server_url}app/"
  say "   and requests and faults as they come at $admin"

  next "Break contents off after 100 bytes, by the admin port. What was fetched half is no file."
  control POST faults '{"rule": "GET *content/streams/*=cut:100"}'
  fails_with 7 get "$fork" -o "$work/broken"
  [ ! -e "$work/broken" ] || fail "half a document was left behind"
  asked=$(curl -sf "${admin}requests?path=*content/streams/*&count=1&wait=5000")
  say "   The server was asked and met the fault: $(grep -o '"answerBytes":[0-9]*' <<<"$asked" | head -n 1)"
  control DELETE faults
  run get "$fork" -o "$work/broken"
  cmp "$work/broken" "$work/testing-data/content/10010" || fail "what was fetched is not what the server holds"

  next "Delete the drawing without the client, and go back to the beginning."
  control DELETE documents/D1001
  fails_with 6 get "$fork" -o "$work/deleted"
  control POST reset
  run get "$fork" -o "$work/deleted"
  stop_server
}
