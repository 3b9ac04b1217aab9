# What the parts of scripts/bench have in common: numbers, lines of tables, and the history of the ratios.
# Sourced by scripts/bench, which sets $bin, $results, $work and $history.
#
# A comparison NAME has a line for each run in $work/NAME.library and $work/NAME.reference:
# "SECONDS PROCESSOR-SECONDS PEAK-KIB INSTRUCTIONS", with "-" for what nobody counted. Where the machine has no counter
# of instructions, valgrind's counts of a few runs are in $work/NAME.library.counted and $work/NAME.reference.counted.

# quartiles: "FIRST MEDIAN THIRD" of the numbers on standard input; nothing without any.
quartiles() {
  sort -g | awk '{v[NR] = $1}
    function at(q,  p, i) {p = 1 + (NR - 1) * q; i = int(p); return i < NR ? v[i] + (p - i) * (v[i + 1] - v[i]) : v[NR]}
    END {if (NR) printf "%.4g %.4g %.4g\n", at(0.25), at(0.5), at(0.75)}'
}

median() { quartiles | awk '{print $2}'; }

divide() { awk -v a="$1" -v b="$2" 'BEGIN {printf "%.3f", a / b}'; }

# judge VALUE LIMIT: gives "yes" or "NO" for a value that must not exceed its limit, and "NO" without a value.
judge() { awk -v v="$1" -v l="$2" 'BEGIN {print v != "" && v + 0 <= l + 0 ? "yes" : "NO"}'; }

# publish NAME: prints a report and keeps it. It is the end of a pipe, so a miss is told by a file and not by a variable.
publish() {
  tee "$results/$1.md"
  ! grep -q '| NO |' "$results/$1.md" || touch "$work/missed"
}

# pair NUMBER NAME PROGRAM ARGUMENTS...: runs "PROGRAM library" and "PROGRAM reference", one after the other, and adds
# what each printed to the files of the comparison NAME. Pair 0 warms up and is not kept.
pair() {
  local number=$1 name=$2 program=$3 order=(library reference) mode
  shift 3
  [ $((number % 2)) -eq 0 ] || order=(reference library)
  for mode in "${order[@]}"; do keep "$number" "$name" "$mode" "$bin/$program" "$mode" "$@"; done
}

# keep NUMBER NAME MODE COMMAND...: runs a command that prints such a line, and adds it, but not that of number 0.
keep() {
  local number=$1 name=$2 mode=$3 line
  shift 3
  line=$("$@") || fail "failed: $*"
  [ "$number" -eq 0 ] || printf '%s\n' "$line" >>"$work/$name.$mode"
}

# field NAME MODE NUMBER: one column of what the runs printed.
field() { awk -v f="$3" '{print $f}' "$work/$1.$2"; }

highest() { field "$1" library 3 | sort -n | tail -1; }

# column NAME MODE MEASURE: the values of wall, processor or instructions, one a line.
column() {
  case $3 in
    wall) field "$1" "$2" 1 ;;
    processor) field "$1" "$2" 2 ;;
    instructions) if [ -e "$work/$1.$2.counted" ]; then cat "$work/$1.$2.counted"; else field "$1" "$2" 4; fi ;;
  esac
}

# ratios NAME MEASURE: those of the pairs; nothing for what was not counted.
ratios() {
  paste <(column "$1" library "$2") <(column "$1" reference "$2") | awk '$1 + 0 > 0 && $2 + 0 > 0 {printf "%.4f\n", $1 / $2}'
}

ratio() { ratios "$@" | median; }

# comparison_head LIBRARY REFERENCE: the head of a table of comparisons.
comparison_head() {
  say "| what | $1, s | $2, s | time: ratio (quartiles) | processor time | instructions | target | met |"
  say "| --- | --- | --- | --- | --- | --- | --- | --- |"
}

# comparison NAME TITLE [MEASURE:LIMIT...]: medians and ratios of one comparison as a line of that table. What it finds
# goes into the history.
comparison() {
  local name=$1 title=$2 measure first middle third limit cells='' targets='' met=''
  local -A found=()
  shift 2
  for measure in wall processor instructions; do
    read -r first middle third < <(ratios "$name" "$measure" | quartiles; echo) || true
    if [ -z "$first" ]; then
      cells+=' - |'
      continue
    fi
    found[$measure]=$middle
    cells+=" $middle ($first to $third) |"
    remember "$name" "$measure" "$first" "$middle" "$third"
  done
  for limit in "$@"; do
    targets+="${targets:+, }${limit%%:*} ${limit#*:}"
    [ "$met" = NO ] || met=$(judge "${found[${limit%%:*}]:-}" "${limit#*:}")
  done
  say "| $title | $(field "$name" library 1 | median) | $(field "$name" reference 1 | median) |$cells $targets | $met |"
}

# remember NAME MEASURE FIRST MEDIAN THIRD: adds quartiles of a ratio to the history, after a look at those of the last
# run: a median that is larger while all but a quarter of the pairs are worse than all but a quarter were is no noise.
remember() {
  local before
  before=$(awk -F '\t' -v n="$1" -v m="$2" '$3 == n && $4 == m {line = $0} END {print line}' "$history")
  printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$(date -u +%FT%TZ)" "$commit" "$@" >>"$history"
  [ -n "$before" ] || return 0
  awk -F '\t' -v n="$1" -v m="$2" -v first="$3" -v median="$4" -v third="$5" '
    first > $7 && median > $6 * 1.01 {
      printf "%s, %s: %s (%s to %s) after %s (%s to %s) on %s at %s\n", n, m, median, first, third, $6, $5, $7, $1, $2
    }' <<<"$before" >>"$work/worse"
}

# tell_worse: names what is slower than in the run before, by more than both of them waver.
tell_worse() {
  [ -s "$work/worse" ] || return 0
  say "Worse than in the run before, beyond the spread (median, quartiles):"
  say
  sed 's/^/- /' "$work/worse"
}

# bound TITLE MEASURED LIMIT: a line of a table of plain figures.
bound_head() {
  say "| what | measured | target | met |"
  say "| --- | --- | --- | --- |"
}
bound() { say "| $1 | $2 | $3 | $(judge "$2" "$3") |"; }

# heading TEXT: the first line of a report.
heading() {
  say "$* ($(date -u +%F), commit $commit, load before: $load_before)"
  say
}

# machine_counts: whether the processor counts instructions for us.
machine_counts() { [ "$("$bin/bench-run" 1 true | awk '{print $4}')" != - ]; }

# counted_instructions COMMAND...: the instructions that the command runs outside of the kernel, by valgrind. Looking for a
# variable costs more the more of them there are, so the command gets only those that it needs.
counted_instructions() {
  local number needed=("PATH=$PATH" "HOME=$HOME" "TMPDIR=${TMPDIR:-/tmp}" "no_proxy=$no_proxy")
  number=$(env -i "${needed[@]}" valgrind --tool=callgrind --callgrind-out-file=/dev/null "$@" 2>&1 >/dev/null | awk '/Collected/ {print $4}')
  [[ $number =~ ^[0-9]+$ ]] || fail "valgrind did not count the instructions of: $*"
  say "$number"
}
