#!/bin/bash
# report_test.sh SOURCE CASE: hands the report of scripts/bench runs whose quartiles are known.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
results=$work bin=/nowhere history=$work/history.tsv commit=c1 load_before=0
: >"$history"
say() { printf '%s\n' "$*"; }
fail() { printf '%s\n' "$*" >&2 && exit 1; }
source "$1/scripts/support/bench_report.bash"

# runs RATIO...: a comparison "it" whose pairs have these ratios of time; processor time is always twice the reference's.
runs() {
  rm -f "$work"/it.*
  local ratio
  for ratio in "$@"; do
    say "$ratio 4 100 -" >>"$work/it.library"
    say "1 2 100 -" >>"$work/it.reference"
  done
}

expect() { [ "$1" = "$2" ] || fail "expected: $2
but got: $1"; }

tells_medians_and_quartiles() {
  runs 1.4 1.1 1.3 1.2 1.5
  expect "$(comparison it "a thing" wall:1.3 processor:2)" \
    "| a thing | 1.3 | 1 | 1.3 (1.2 to 1.4) | 2 (2 to 2) | - | wall 1.3, processor 2 | yes |"
}

names_a_miss() {
  runs 1.4 1.1 1.3 1.2 1.5
  comparison it "a thing" wall:1.29 processor:2 | publish it >"$work/printed"
  grep -q '| wall 1.29, processor 2 | NO |' "$work/printed" || fail "the line does not say NO"
  [ -e "$work/missed" ] || fail "the miss is not told"
}

names_what_became_worse() {
  runs 1.1 1.2 1.3
  comparison it "a thing" >"$work/printed"
  [ -z "$(tell_worse)" ] || fail "a first run is worse than none"
  commit=c2
  runs 1.5 1.6 1.7
  comparison it "a thing" >"$work/printed"
  # The quartiles of three are half way between them.
  tell_worse | grep -q '^- it, wall: 1.6 (1.55 to 1.65) after 1.2 (1.15 to 1.25) on .* at c1$' ||
    fail "not named: $(tell_worse)"
  expect "$(tell_worse | grep -c '^- ')" 1
}

passes_over_what_only_wavers() {
  runs 1.1 1.2 1.3
  comparison it "a thing" >"$work/printed"
  # Worse in the middle, but a quarter of the pairs is as good as before.
  runs 1.1 1.3 1.5
  comparison it "a thing" >"$work/printed"
  # Better.
  runs 0.8 0.9 1.0
  comparison it "a thing" >"$work/printed"
  expect "$(tell_worse)" ""
}

leaves_out_what_nobody_counted() {
  runs 1.1 1.2 1.3
  comparison it "a thing" instructions:2 | grep -q '| - | instructions 2 | NO |$' || fail "a target without a figure is met"
  [ "$(grep -c instructions "$history")" -eq 0 ] || fail "the history holds a figure that nobody counted"
}

takes_counts_of_valgrind() {
  runs 1.1 1.2 1.3
  printf '30\n' >"$work/it.library.counted"
  printf '20\n' >"$work/it.reference.counted"
  comparison it "a thing" instructions:1.5 | grep -qF '| 1.5 (1.5 to 1.5) | instructions 1.5 | yes |' ||
    fail "the counts are not used"
}

"$2"
