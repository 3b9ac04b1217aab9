#!/bin/bash
# environment_switches.sh SOURCE: README's table of switches has those that the code reads, no more and no less.
set -euo pipefail
cd "$1"
told=$(grep -E '^\| `FENLOOM_' README.md | grep -oE '^\| `FENLOOM_[A-Z_]+' | cut -c 4- | tr -d '`' | sort -u)
read_by_code=$(grep -rhoE '"FENLOOM_[A-Z_]+"' --include='*.cpp' \
  base connection documents translation browsing server public platform platform_default | tr -d '"' | sort -u)
[ -n "$told" ] || { echo "README has no table of switches" >&2 && exit 1; }
if ! diff <(echo "$told") <(echo "$read_by_code"); then
  echo "README tells of those marked <, the code reads those marked >" >&2
  exit 1
fi
