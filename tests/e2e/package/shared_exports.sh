#!/bin/bash
# shared_exports.sh WORK: the shared libraries show what the headers declare, and nothing else.
set -euo pipefail
lib=$1/prefix/lib include=$1/prefix/include/vtdirect
failed=no

exports_of() { nm -DC --defined-only "$lib/$1" | sed 's/^[0-9a-f]* [A-Za-z] //'; }

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
for symbol in 'VtDirectUtils::GetLocalFile(char const\*)' \
  'VtDirectUtils::LocalFileHolder::LocalFileHolder(' 'VtDirectUtils::LocalFileHolder::~LocalFileHolder()' \
  'VtDirectUtils::LocalFileHolder::GetLocalPath' 'VtDirectUtils::LocalFileHolder::IsTemporary()' \
  'VtDirectManager::Outcome::Outcome()' 'VtDirectManager::Outcome::~Outcome()' 'VtDirectManager::Outcome::Entries' \
  'VtDirectManager::Outcome::Cause' 'VtDirectManager::Outcome::MayHaveHappened() const' \
  'VtDirectManager::Outcome::Empty() const' 'VtDirectManager::Outcome::Dropped() const' \
  'VtDirectManager::Outcome::Clear()' 'VtDirectManager::FailureKindText'; do
  if ! grep -q "^$symbol" <<<"$exported"; then
    echo "$symbol is declared and not exported" >&2
    failed=yes
  fi
done

# What a host calls of the platform itself.
platform=$(exports_of libvtdirect_platform.so)
for function in du::http::SetPasswordCredentials du::http::SetBearerToken du::http::ClearCredentials \
  du::http::ClearAllCredentials du::http::SetTransportSettings du::http::GetTransportSettings \
  du::SetCatalogueDirectory dp::SetTraceHandler; do
  if ! grep -q "^$function(" <<<"$platform"; then
    echo "$function is declared and not exported" >&2
    failed=yes
  fi
done
[ $failed = no ]
