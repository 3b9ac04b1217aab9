# Two users with a work folder each. Sourced by scripts/demo, whose functions and variables it uses.

# inside DIRECTORY COMMAND...: runs a function of the demonstration in a directory.
inside() {
  local directory=$1
  shift
  say "   [in $(basename "$directory")]"
  pushd "$directory" >/dev/null || return
  "$@"
  popd >/dev/null || return
}

# Both clone the manuals, both edit one; the second commit meets a conflict, which is then resolved.
show_work_folder() {
  local manuals='//plm/Products/Trekking Bike/Folders/Manuals/' manual='chain manual.xml' uploads
  local anna=$work/anna bruno=$work/bruno

  next "Start a server for Anna and Bruno again, who both make a work folder of the manuals."
  uploads=$(free_port)
  start_server "$work/server-folders" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/data-folders" \
    --user anna:anna --user bruno:bruno --upload-port "$uploads"
  name_uploads "$uploads"
  as anna clone "$manuals" "$anna"
  as bruno clone "$manuals" "$bruno"
  cmp "$anna/$manual" "$bruno/$manual" || fail "the two work folders differ"

  next "Both edit the chain manual. Anna looks at what she changed, and commits it."
  sed -i 's/200 km/150 km/' "$anna/$manual"
  sed -i 's/Oil/Oil and wipe/' "$bruno/$manual"
  inside "$anna" as anna st
  inside "$anna" as anna diff "$manual"
  inside "$anna" as anna commit
  same_content bruno "$manuals$manual" "$anna/$manual"

  next "Bruno commits too. It is a conflict: his file was made from the version before, and nothing is sent."
  inside "$bruno" as bruno st
  inside "$bruno" refused bruno commit
  same_content anna "$manuals$manual" "$anna/$manual"

  next "He puts his edit aside, pulls Anna's version, makes his change in it, and commits that."
  inside "$bruno" as bruno revert "$manual"
  inside "$bruno" as bruno pull
  cmp "$anna/$manual" "$bruno/$manual" || fail "the pull did not bring Anna's version"
  grep -q 'Oil and wipe' "$bruno/$manual.edited" || fail "Bruno's edit is gone"
  sed -i 's/Oil/Oil and wipe/' "$bruno/$manual"
  inside "$bruno" as bruno commit "$manual"
  inside "$bruno" as bruno log "$manual"

  next "Anna pulls, and has both changes."
  inside "$anna" as anna pull
  grep -q 'Oil and wipe.*150 km' "$anna/$manual" || fail "a change is missing"
  cmp "$anna/$manual" "$bruno/$manual" || fail "the two work folders differ"
  say "   $(sed -n 's,.*<p>\(.*\)</p>.*,\1,p' "$anna/$manual")"

  next "Stop the server."
  stop_server
}
