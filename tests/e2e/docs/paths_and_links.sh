#!/bin/bash
# paths_and_links.sh SOURCE: every path that the documentation names, and every page that it links to, exists.
set -euo pipefail
cd "$1"
failed=no
paths=0

miss() {
  echo "$1 names $2, which does not exist" >&2
  failed=yes
}

# A path is a code span that begins with one of the folders of this tree.
check_paths() {
  local span
  while read -r span; do
    paths=$((paths + 1))
    [ -e "$span" ] || miss "$1" "$span"
  done < <(grep -oE '`[^` ]+`' "$1" | tr -d '`' |
    grep -E '^(base|bench|browsing|catalogues|cmake|connection|docs|documents|examples|fuzz|hosts|platform|platform_default|public|scripts|server|simulator|tests|translation)/' |
    grep -vE '[*<>]' || true)
}

check_links() {
  local link
  while read -r link; do
    [ -e "$(dirname "$1")/$link" ] || miss "$1" "$link"
  done < <(awk '/^```/ {code = !code} !code' "$1" | grep -oE '\]\([^)#]+' | cut -c 3- | grep -vE '^https?:' || true)
}

for page in README.md CONTRIBUTING.md CHANGELOG.md SECURITY.md docs/*.md docs/decisions/*.md tests/README.md; do
  check_paths "$page"
  check_links "$page"
done
for command in $(grep -ohE '^scripts/[a-z]+' README.md CONTRIBUTING.md | sort -u); do
  [ -x "$command" ] || miss README.md "$command"
done
echo "$paths paths"
[ "$paths" -ge 50 ] || { echo "too few paths were found: the search is broken" >&2 && exit 1; }
[ $failed = no ]
