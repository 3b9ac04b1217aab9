#!/bin/bash
# installed_links.sh PREFIX: every page that an installed page links to is installed too, where the link says.
set -euo pipefail
cd "$1/share/doc"
links=0
failed=no
while read -r page; do
  while read -r link; do
    links=$((links + 1))
    [ -e "$(dirname "$page")/$link" ] || { echo "$page links to $link, which is not installed" >&2 && failed=yes; }
  done < <(awk '/^```/ {code = !code} !code' "$page" | grep -oE '\]\([^)#]+' | cut -c 3- | grep -vE '^https?:' || true)
done < <(find . -name '*.md' -not -path '*/examples/*')
echo "$links links"
[ "$links" -ge 50 ] || { echo "too few links were found: the search is broken" >&2 && exit 1; }
[ $failed = no ]
