#!/bin/bash
# shared_exports.sh WORK [--list]: the shared libraries show what the headers declare, and nothing else.
#
# exported_symbols.txt holds every function that they promise, with its parameters: a host that was built with an older
# library finds each by this name. Somebody who changes it on purpose makes it again, after the test
# package.shared.installs:
#
#   tests/e2e/package/shared_exports.sh build/release-package-shared --list >tests/e2e/package/exported_symbols.txt
set -euo pipefail
export LC_ALL=C
here=$(dirname "${BASH_SOURCE[0]}")
lib=$1/prefix/lib include=$1/prefix/include/vtdirect
failed=no

exports_of() { nm -DC --defined-only "$lib/$1" | sed 's/^[0-9a-f]* [A-Za-z] //'; }

# What a library defines for its hosts. Weak symbols are left out: which tables and which copies of the standard library's
# templates there are is the compiler's affair.
promised_by() {
  nm -DC --defined-only "$lib/$1" | sed -n 's/^[0-9a-f]* [TDBR] //p' | sort -u | sed "s/^/$1: /"
}
promised() { promised_by libvtdirect.so && promised_by libvtdirect_platform.so; }

if [ "${2:-}" = --list ]; then
  promised
  exit 0
fi

# only LIBRARY PATTERN: every exported name matches.
only() {
  local others
  others=$(exports_of "$1" | grep -vE "$2" || true)
  if [ -n "$others" ]; then
    printf '%s shows what is not meant for hosts:\n%s\n' "$1" "$others" >&2
    failed=yes
  fi
}
only libvtdirect.so '^(VtDirectManager|VtDirectUtils)::'
only libvtdirect_platform.so '^((vtable|typeinfo|typeinfo name) for )?(du|dp)::'

# The functions that the public header declares as exported.
declared=$(grep -v '^#' "$include/vt_direct_manager.h" | tr '\n' ' ' | grep -oE 'VTDIRECT_API [^;(]*\(' |
  sed -E 's/.*[ *]([A-Za-z]+)\($/\1/' | sort -u)
exported=$(exports_of libvtdirect.so)
[ "$(wc -l <<<"$declared")" -ge 30 ]
for function in $declared; do
  if ! grep -qE "^VtDirectManager::$function(\[abi:cxx11\])?\(" <<<"$exported"; then
    echo "VtDirectManager::$function is declared and not exported" >&2
    failed=yes
  fi
done

if ! diff "$here/exported_symbols.txt" <(promised) >&2; then
  echo "the exported functions are others than before (<: gone, >: new); the head of $0 says what to do" >&2
  failed=yes
fi
[ $failed = no ]
