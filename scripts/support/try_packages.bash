# Installs packages where nothing of this project was ever built. Sourced by scripts/package.

# in_chroot COMMAND...: inside the bare system.
in_chroot() {
  env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
    no_proxy=127.0.0.1 chroot "$bare" "$@"
}

# make_bare_debian: a Debian 12 with nothing but what every Debian 12 has, in the directory $bare.
make_bare_debian() {
  [ "$(id -u)" -eq 0 ] || { say "A bare Debian 12 can be made by root alone." && return 1; }
  if ! debootstrap --variant=minbase bookworm "$bare" "${DEBIAN_MIRROR:-http://deb.debian.org/debian}" \
    >"$bare.log" 2>&1; then
    tail -n 3 "$bare.log"
    say "A bare Debian 12 could not be made."
    return 1
  fi
  in_chroot true || { say "This machine lets nobody change the root directory." && return 1; }
}

# The packages bring what they need, the programs run, and README's example is built without being told where.
try_in_bare_debian() {
  local apt=(in_chroot apt-get -q -y -o APT::Sandbox::User=root) all development=() others=() package
  cp "$packages"/*.deb "$bare/root"
  mkdir -p "$bare/root/source"
  cp "$root/README.md" "$root/tests/e2e/docs/readme_example.sh" "$bare/root/source"

  say "-- the programs, and nothing for developers"
  mapfile -t all < <(cd "$bare" && ls -d root/*.deb | sed 's,^,/,')
  for package in "${all[@]}"; do
    [[ $package == *-dev_* ]] && development+=("$package") || others+=("$package")
  done
  "${apt[@]}" install --no-install-recommends "${others[@]}" || return 1
  in_chroot vtdirect --version || return 1
  in_chroot vantry-sim --help >/dev/null || return 1
  in_chroot vtdirect-mount --help >/dev/null || return 1

  say "-- the development files, and README's example by CMake and by pkg-config"
  "${apt[@]}" install --no-install-recommends "${development[@]}" g++ cmake ninja-build pkg-config || return 1
  in_chroot env CXX=c++ VANTRY_SIM=vantry-sim bash /root/source/readme_example.sh /root/source /root/work || return 1
  in_chroot bash -c 'cd /root/work/hosts/readme &&
    c++ -std=c++17 fetch.cpp $(pkg-config --cflags --libs vtdirect) -o fetch && ldd fetch | grep libvtdirect' ||
    return 1

  say "-- removal"
  "${apt[@]}" purge 'libvtdirect*' vtdirect-tools vtdirect-mount vantry-sim || return 1
  if find "$bare/usr" \( -iname '*vtdirect*' -o -iname '*vantry*' \) | grep .; then
    say "The packages left this behind."
    return 1
  fi
}

# What can be said of the packages without a system to install them on.
try_without_chroot() {
  say "Instead: are the dependencies to be had, and does README's example build against what is in the packages?"
  apt-get -q -s install "$packages"/*.deb >/dev/null || return 1
  local tree=$bare/unpacked package
  for package in "$packages"/*.deb; do dpkg-deb -x "$package" "$tree" || return 1; done
  mkdir -p "$bare/work"
  ln -s "$tree/usr" "$bare/work/prefix"
  LD_LIBRARY_PATH=$(dirname "$(find "$tree" -name 'libvtdirect.so')") CXX=c++ VANTRY_SIM=$tree/usr/bin/vantry-sim \
    bash "$root/tests/e2e/docs/readme_example.sh" "$root" "$bare/work"
}

try_packages() {
  say "== trying"
  bare=$(mktemp -d)
  trap 'rm -rf --one-file-system "$bare" "$bare.log"' EXIT
  if make_bare_debian; then
    try_in_bare_debian || fail "the packages failed on a bare Debian 12"
  else
    try_without_chroot || fail "the packages failed"
  fi
}
