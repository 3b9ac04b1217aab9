#!/bin/bash
# run_recipe.sh KIND FOLDER [COPIES]: runs a recipe, or so many copies of it at once, which must not meet.
set -euo pipefail
kind=$1 folder=$2 copies=${3:-1}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work HOME=$work TMPDIR=$work no_proxy=127.0.0.1 NO_PROXY=127.0.0.1
export PYTHONDONTWRITEBYTECODE=1
pytest=$(command -v pytest-3 || command -v pytest || true)

run() {
  case $kind in
    shell) bash "$folder/documents.sh" ;;
    pytest) "$pytest" -q -p no:cacheprovider --basetemp "$work/pytest-$1" "$folder" ;;
    googletest) "$folder/documents_test" ;;
  esac
}

if [ "$kind" = pytest ] && [ -z "$pytest" ]; then
  echo "There is no pytest here; Debian has it as python3-pytest." >&2
  exit 77
fi
ids=()
for copy in $(seq "$copies"); do
  run "$copy" >"$work/output-$copy" 2>&1 &
  ids+=($!)
done
failed=no
for copy in $(seq "$copies"); do
  wait "${ids[copy - 1]}" || failed=yes
  cat "$work/output-$copy"
done
if ls -d "$work"/tmp.* "$work"/vantry-sim-* 2>/dev/null; then
  echo "these were left behind" >&2
  failed=yes
fi
[ $failed = no ]
