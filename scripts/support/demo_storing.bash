# The life of a document, told by two users. Sourced by scripts/demo, whose functions and variables it uses.

# as USER COMMAND ARGUMENTS...: a command of vtdirect by that user, each of whom has a home of their own, so that the
# kept checkouts don't mix.
as() {
  local user=$1
  shift
  say "   [$user]"
  XDG_STATE_HOME=$work/state-$user VTDIRECT_USER=$user VTDIRECT_PASSWORD=$user run "$@"
}

# answer USER COMMAND ARGUMENTS...: the same, unseen; prints its standard output.
answer() {
  local user=$1
  shift
  XDG_STATE_HOME=$work/state-$user VTDIRECT_USER=$user VTDIRECT_PASSWORD=$user "$vtdirect" "$@" 2>/dev/null
}

# refused USER COMMAND ARGUMENTS...: the same, which must fail.
refused() {
  local code=0
  as "$@" || code=$?
  say "   Exit code $code."
  [ "$code" -ne 0 ] || fail "this should have been refused"
}

# name_uploads PORT: lists the server, and the port of its own on which it takes the bytes of documents. A login of the
# environment goes there only when the configuration says that it is the same one.
name_uploads() {
  printf '[servers]\nplm = %s\nuploads = http://127.0.0.1:%s/\n\n[server plm]\nlogin_also_for = uploads\n' \
    "$server_url" "$1" >"$work/vtdirect/config"
}

# same_content USER ADDRESS FILE: what the server has there must be that file.
same_content() {
  rm -f "$work/fetched"
  answer "$1" get "$2" -o "$work/fetched" >/dev/null || fail "$2 could not be fetched"
  cmp "$work/fetched" "$3" || fail "the server holds something else than $3"
  say "   What the server holds is $(basename "$3"), byte for byte."
}

# held QUERY EXPECTED: asks the database of the server with the directory $data, behind the server's back.
held() {
  local found
  found=$(sqlite3 -readonly "$data/vantry-sim.db" "$1")
  say "   database: $found"
  [ "$found" = "$2" ] || fail "the database should hold: $2"
}

# What the database holds of the document's newest iteration in a folder.
newest_of() {
  printf "SELECT i.revision || '.' || i.iteration || ', ' || %s FROM iterations i JOIN masters m ON m.id = i.master
          WHERE m.cad_name = 'stem.lxz' AND i.is_latest = 1 AND i.workspace IS NULL" "$1"
}

# A port of this machine that nobody listens on.
free_port() {
  local port
  while :; do
    port=$((20000 + RANDOM % 20000))
    (: <"/dev/tcp/127.0.0.1/$port") 2>/dev/null || break
  done
  say "$port"
}

# killed_at_checkin USER FILE ADDRESS: a put with a check-in whose answer never comes, killed while it waits.
killed_at_checkin() {
  local pid journal=$work/state-$1/vtdirect/journal
  say "   [$1] \$ vtdirect put $(basename "$2") '$3' --checkin"
  XDG_STATE_HOME=$work/state-$1 VTDIRECT_USER=$1 VTDIRECT_PASSWORD=$1 TMPDIR=$work "$vtdirect" put "$2" "$3" --checkin \
    >/dev/null 2>&1 &
  pid=$!
  for _ in $(seq 300); do
    ! grep -q 'checkin' "$journal" || break
    sleep 0.1
  done
  grep -q 'checkin' "$journal" || fail "the check-in was not written to the journal"
  kill -KILL "$pid"
  wait "$pid" 2>/dev/null || true
  say "   killed while it waits for the answer"
}

# The life of a stem: created, checked out, stored, checked in, iterated; and a change of a gear, thrown away again.
show_storing() {
  local frame='//plm/Products/Trekking Bike/Folders/Frame'
  local stem=$frame/stem.lxz gear='//plm/Products/Trekking Bike/Folders/Drivetrain/gear.lxz' uid uploads port
  local data=$work/data-life
  printf 'a stem, first sketch\n' >"$work/sketch"
  head -c 3000000 /dev/urandom >"$work/stem.lxz"
  printf 'a picture of the stem\n' >"$work/picture"
  printf 'where the stem came from\n' >"$work/history"
  printf 'a stem, shorter\n' >"$work/shorter"

  next "Start a server that two users may use, Anna and Bruno."
  uploads=$(free_port)
  start_server "$work/server-life" "$root/build/release/simulator/vantry-sim" --port 0 --data "$data" \
    --user anna:anna --user bruno:bruno --upload-port "$uploads"
  name_uploads "$uploads"
  run servers

  next "Anna creates a document in the folder of frames."
  as anna put "$work/sketch" "$stem"
  same_content bruno "$stem" "$work/sketch"
  held "$(newest_of "(SELECT count(*) FROM contents c WHERE c.iteration = i.id)")" "A.1, 1"

  next "She checks it out. Bruno sees that, and can't."
  as anna checkout "$stem"
  as anna checkouts
  uid=$(answer bruno uid "$stem")
  as bruno status "$uid"
  refused bruno checkout "$uid"

  next "She stores the drawing into her working copy; Bruno still sees the sketch."
  as anna put "$work/stem.lxz" "$stem"
  same_content bruno "$uid" "$work/sketch"

  next "She stores it once more, with a viewable, metadata and the frame that it was made from."
  as anna put "$work/stem.lxz" "$stem" --viewable "$work/picture" --metadata "$work/history" --language en \
    --link "frame.lxz=$frame/frame.lxz"
  held "$(newest_of "(SELECT count(*) FROM checkouts c WHERE c.base = i.id)")" "A.1, 1"

  next "She checks it in. Now Bruno sees the drawing."
  as anna checkin "$stem"
  same_content bruno "$stem" "$work/stem.lxz"
  held "$(newest_of "(SELECT count(*) FROM contents c WHERE c.iteration = i.id AND c.role = 'secondary')")" "A.2, 2"
  held "$(newest_of "(SELECT s.cad_name FROM dependencies d JOIN iterations o ON o.id = d.source
                      JOIN masters s ON s.id = o.master WHERE d.iteration = i.id)")" "A.2, frame.lxz"
  held "SELECT count(*) FROM checkouts c JOIN iterations i ON i.id = c.base JOIN masters m ON m.id = i.master
        WHERE m.cad_name = 'stem.lxz'" 0
  as bruno links "$(answer bruno uid "$stem")"

  next "Bruno makes a new iteration without a checkout. The link stays."
  as bruno put "$work/shorter" "$stem"
  same_content anna "$stem" "$work/shorter"
  held "$(newest_of "(SELECT count(*) FROM dependencies d WHERE d.iteration = i.id)")" "A.3, 1"
  as anna versions "$stem"

  next "Anna checks a gear out, stores something into it, and throws that away."
  as anna checkout "$gear"
  as anna put "$work/sketch" "$gear"
  held "SELECT count(*) FROM checkouts" 3
  as anna undo "$gear"
  same_content anna "$gear" "$data/content/10030"
  as anna checkouts
  held "SELECT count(*) FROM checkouts" 2
  say "   Those two are of the bicycle maker's own story."

  next "She stores into the gear with a check-in, and is killed in the middle of it. Nothing is lost."
  port=${server_url##*:}
  stop_server
  start_server "$work/server-life" "$root/build/release/simulator/vantry-sim" --port "${port%/}" --data "$data" \
    --user anna:anna --user bruno:bruno --upload-port "$uploads" --fault 'POST *checkin=stall*1'
  as anna checkout "$gear"
  killed_at_checkin anna "$work/shorter" "$gear"
  as anna status "$gear"
  as anna recover
  as anna checkin "$gear"
  same_content bruno "$gear" "$work/shorter"

  next "Stop the server."
  stop_server
}
