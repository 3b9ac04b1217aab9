#!/bin/bash
# debian_packages.sh SOURCE WORK: the Debian packages have what Debian asks of every package, depend on what they use,
# share no file, and their programs run.
set -euo pipefail
source=$1 work=$2
bash "$source/scripts/package" --quick "$work"
cd "$work/packages"
failed=no
version=$(sed -n '1s/^vtdirect (\(.*\)).*/\1/p' "$source/cmake/debian/changelog")

# wrong WHAT...: notes a difference and goes on.
wrong() {
  echo "$*" >&2
  failed=yes
}

# has PACKAGE PATTERN...: files of the package, as extended regular expressions of the whole path below /usr.
has() {
  local package=$1 pattern
  shift
  for pattern in "$@"; do
    grep -qE "^usr/$pattern\$" "$package.files" || wrong "$package has no file $pattern"
  done
}

# depends_on PACKAGE OTHER...: with the version in brackets where the very version counts.
depends_on() {
  local package=$1 other depends
  shift
  depends=$(dpkg-deb -f "$package"_*.deb Depends | sed 's/, /\n/g')
  for other in "$@"; do
    grep -qE "^${other//+/\\+}( |\$)" <<<"$depends" || wrong "$package doesn't depend on $other, but on $depends"
  done
}

for deb in *.deb; do
  package=${deb%%_*}
  [ "$(dpkg-deb -f "$deb" Version)" = "$version" ] || wrong "$deb is not of the version $version"
  dpkg-deb -x "$deb" tree
  dpkg-deb --fsys-tarfile "$deb" | tar -t | sed 's,^\./,,' | grep -v '/$' >"$package.files"
  has "$package" "share/doc/$package/copyright" "share/doc/$package/changelog.Debian.gz"
  if grep -E '^usr/share/man/.*[1-8]$|\.a$|/LICENSE' "$package.files"; then
    wrong "$package has a manual page that is not compressed, a static library, or a second text of the licence"
  fi
done
shared=$(cat ./*.files | sort | uniq -d)
[ -z "$shared" ] || wrong "these are in two packages: $shared"

# The libraries, whose words in other languages are in a package that goes with every version of them.
has libvtdirect0 'lib/[^/]+/libvtdirect\.so\.0' 'lib/[^/]+/libvtdirect_platform\.so\.0'
! grep -E '\.so$|include|/share/vtdirect' libvtdirect0.files || wrong "libvtdirect0 has more than libraries"
depends_on libvtdirect0 libcurl4 libexpat1 libc6 libstdc++6 libvtdirect-common
for library in libvtdirect libvtdirect_platform; do
  dpkg-deb -I libvtdirect0_*.deb shlibs | grep -qxF "$library 0 libvtdirect0 (= $version)" ||
    wrong "the packages that use $library are not told which version"
done
dpkg-deb -I libvtdirect0_*.deb triggers | grep -qx 'activate-noawait ldconfig' || wrong "ldconfig is not told"
[ "$(dpkg-deb -f libvtdirect-common_*.deb Architecture)" = all ] || wrong "words are the same on every machine"
has libvtdirect-common 'share/vtdirect/catalogues/cmsinterface/cmsinterfaceStrings\.(de|en|fr|ja)\.json'

# What is built with them. A shared library brings its own dependencies along.
depends_on libvtdirect-dev "libvtdirect0 \(= $version\)"
! dpkg-deb -f libvtdirect-dev_*.deb Depends | grep -e curl -e expat || wrong "hosts need no headers of third parties"
has libvtdirect-dev include/vtdirect/vt_direct_manager.h include/vtdirect/platform/http.h \
  'lib/[^/]+/libvtdirect\.so' 'lib/[^/]+/libvtdirect_platform\.so' 'lib/[^/]+/pkgconfig/vtdirect\.pc' \
  'lib/[^/]+/cmake/VtDirect/VtDirectConfig\.cmake' share/doc/libvtdirect-dev/README.md \
  share/doc/libvtdirect-dev/docs/recipes.md share/doc/libvtdirect-dev/examples/fetch.cpp

# The programs.
depends_on vtdirect-tools "libvtdirect0 \(= $version\)"
has vtdirect-tools bin/vtdirect 'share/man/man1/vtdirect\.1\.gz' 'share/man/man1/vtdirect-xliff-put\.1\.gz' share/bash-completion/completions/vtdirect \
  share/zsh/vendor-completions/_vtdirect 'share/fish/vendor_completions\.d/vtdirect\.fish'
# The mount is apart, so that nobody else needs libfuse.
! dpkg-deb -f vtdirect-tools_*.deb Depends | grep -e fuse || wrong "the command line needs no libfuse"
depends_on vtdirect-mount "libvtdirect0 \(= $version\)" "vtdirect-tools \(= $version\)" libfuse3-3 fuse3
has vtdirect-mount bin/vtdirect-mount 'share/man/man1/vtdirect-mount\.1\.gz' \
  share/doc/vtdirect-mount/vtdirect-mount.service
# The simulator is for those who have another client, too.
depends_on vantry-sim libsqlite3-0 libssl3
! dpkg-deb -f vantry-sim_*.deb Depends | grep -e vtdirect -e curl || wrong "vantry-sim needs nothing of the libraries"
has vantry-sim bin/vantry-sim 'share/man/man1/vantry-sim\.1\.gz' share/bash-completion/completions/vantry-sim \
  share/doc/vantry-sim/README.md
for program in tree/usr/bin/* tree/usr/lib/*/*.so.0; do
  ! readelf -d "$program" | grep -E 'R(UN)?PATH' || wrong "$program looks for libraries at a place of its own"
  ! readelf -S "$program" | grep -F .debug_info || wrong "$program is not stripped"
done
libraries=$(dirname "$PWD"/tree/usr/lib/*/libvtdirect.so.0)
export LD_LIBRARY_PATH=$libraries
tree/usr/bin/vtdirect --version | grep -xF "vtdirect ${version%-*}" || wrong "vtdirect does not say its version"
tree/usr/bin/vantry-sim --help | grep -F -e --port || wrong "vantry-sim does not run"
tree/usr/bin/vtdirect-mount --help | grep -F -e --foreground || wrong "vtdirect-mount does not run"

# The command line finds the program of the other package, which shows what a server has.
try_mount() {
  local url= file='Products/Trekking Bike/Folders/Frame/fork.lxz'
  rm -rf mounted && mkdir -p mounted/tree mounted/home
  tree/usr/bin/vantry-sim --port 0 --data mounted/data >mounted/said 2>&1 &
  simulator=$!
  for _ in $(seq 100); do
    url=$(grep -m 1 -o 'http://[^ ]*' mounted/said || true)
    [ -z "$url" ] || break
    sleep 0.1
  done
  HOME=$PWD/mounted/home XDG_CACHE_HOME='' XDG_STATE_HOME='' no_proxy=127.0.0.1 \
    tree/usr/bin/vtdirect --server "plm=$url" mount --no-prompt //plm/ mounted/tree &&
    grep 'FENLET DRAWING' "mounted/tree/$file" && tree/usr/bin/vtdirect unmount mounted/tree ||
    wrong "the installed mount does not show the server"
  ! grep -q " $PWD/mounted/tree " /proc/mounts || fusermount3 -uz mounted/tree
  kill "$simulator"
}
# A container may have the device, and not the right to mount by it.
if (: <>/dev/fuse) 2>/dev/null && [ -x /usr/bin/fusermount3 ]; then
  try_mount
else
  echo "The mount is not tried: there is no /dev/fuse that can be opened here."
fi

[ $failed = no ]
