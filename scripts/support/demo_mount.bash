# A server as a directory. Sourced by scripts/demo, whose functions and variables it uses.

# in_shell LINE: shows a line as a person would type it, and runs it.
in_shell() {
  say "   \$ $1"
  bash -c "$1" 2>&1 | sed 's/^/   /'
}

stop_mount() {
  [ -z "${mounted:-}" ] || "$vtdirect" unmount "$mounted" 2>/dev/null || fusermount3 -uz "$mounted" || true
  mounted=
}

show_mount() {
  next "Show the server as a directory, for every program."
  if ! [ -x "$root/build/release/hosts/cli/vtdirect-mount" ]; then
    say "   vtdirect-mount is not built: there is no libfuse3. The demonstration goes on without it."
    return
  fi
  if ! (: <>/dev/fuse) 2>/dev/null; then
    say "   There is no /dev/fuse on this machine that can be opened. The demonstration goes on without it."
    return
  fi
  start_server "$work/server-mounted" "$root/build/release/simulator/vantry-sim" --port 0 --data "$work/mounted-data"
  printf '[servers]\nplm = %s\n' "$server_url" >"$work/vtdirect/config"
  mkdir -p "$work/plm"
  mounted=$work/plm
  run mount --write //plm/ "$mounted"
  export PLM=$mounted
  in_shell 'find "$PLM/Products/Trekking Bike/Folders" -maxdepth 2 | sed "s,^$PLM,~/plm," | sort | head -12'
  in_shell 'cd "$PLM/Products/Trekking Bike/Folders" && grep -rl "version B.1"'
  in_shell 'ls "$PLM/Products/Trekking Bike/Folders/Frame/.versions/fork.lxz"'
  cmp "$mounted/Products/Trekking Bike/Folders/Frame/fork.lxz" "$work/mounted-data/content/10010" ||
    fail "what the mount shows is not what the server holds"
  say "   The same bytes as in the server's store."
  next "Check a document out, edit it in its directory with two editors, and check it in."
  run checkout "$mounted/Products/Trekking Bike/Folders/Frame/fork.lxz"
  in_shell 'sed -i "s/fork/FORK/" "$PLM/Products/Trekking Bike/Folders/Frame/fork.lxz"'
  if command -v vim >/dev/null; then
    in_shell 'vim -es -u NONE -c "2s/FORK/Fork/" -c wq "$PLM/Products/Trekking Bike/Folders/Frame/fork.lxz"'
  fi
  run checkin "$mounted/Products/Trekking Bike/Folders/Frame/fork.lxz"
  run refresh "$mounted"
  in_shell 'head -3 "$PLM/Products/Trekking Bike/Folders/Frame/fork.lxz"'
  # FORK by sed, or Fork where there is a vim; not fork, as it was.
  grep -q "^name F[Oo][Rr][Kk][.]lxz$" "$mounted/Products/Trekking Bike/Folders/Frame/fork.lxz" || fail "the edit is not there"
  ! cmp -s "$mounted/Products/Trekking Bike/Folders/Frame/fork.lxz" "$work/mounted-data/content/10010" ||
    fail "the document is as it was"
  in_shell 'ls "$PLM/Products/Trekking Bike/Folders/Frame/.versions/fork.lxz"'

  next "Take the directory away."
  run unmount "$mounted"
  mounted=
  stop_server
}
