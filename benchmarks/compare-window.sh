#!/usr/bin/env bash
# Measures what the user sees beside public tools, on a display in memory: the start, memory, long lists, scrolling.
# Five times each in one run, warm; prints medians with the least and the largest, one line per row, with tabs between
#   work, ours, unit, theirs, against, ratio, required
# A row whose tool or program is missing says "not measured"; the way to get it goes to the standard error stream.
#   benchmarks/compare-window.sh [BUILD-FOLDER]   (build/release by default)
set -euo pipefail

self=$(realpath "${BASH_SOURCE[0]}")
if [[ ${1-} == -h || ${1-} == --help ]]; then
  sed -n '2,6s/^# \{0,1\}//p' "$self"
  exit 0
fi
top=$(dirname "$(dirname "$self")")
build=$(realpath "${1:-$top/build/release}")
# shellcheck source=benchmarks/figures.sh
source "$top/benchmarks/figures.sh"

say() { printf 'compare-window: %s\n' "$*" >&2; }
has() { command -v "$1" >/dev/null; }
for program in Xvfb openbox dbus-run-session; do
  has "$program" || { say "there is no $program; scripts/setup.sh installs it"; exit 1; }
done
# A message bus of its own: toolkits start services on it, and those stay warm until the end. What the bus and the
# services say goes nowhere.
if [[ -z ${COMPARE_WINDOW_BUS-} ]]; then
  COMPARE_WINDOW_BUS=1 exec dbus-run-session -- "$self" "$build" 3>&1 4>&2 >/dev/null 2>&1
fi
exec >&3 2>&4 3>&- 4>&-

work=$(mktemp -d)
children=()
finish() {
  ((${#children[@]} == 0)) || kill "${children[@]}" 2>/dev/null || true
  rm -rf "$work"
}
trap finish EXIT
mkdir -m 700 "$work/home" "$work/run"
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_CACHE_HOME=$work/home/.cache XDG_RUNTIME_DIR=$work/run
unset WAYLAND_DISPLAY QT_QPA_PLATFORM QT_QUICK_BACKEND QSG_RHI_BACKEND
# Nobody answers there, and that is known at once.
printf '{ "apiBase": "http://127.0.0.1:9/" }' >"$work/service.json"
export KVTEDITOR_SERVICE_CONFIG=$work/service.json

mkfifo "$work/display"
exec {display_fd}<>"$work/display"
Xvfb -displayfd "$display_fd" -screen 0 1600x1000x24 -nolisten tcp 2>/dev/null &
children+=($!)
read -r number <&"$display_fd"
export DISPLAY=:$number
openbox >/dev/null 2>&1 &
children+=($!)

not_measured() { printf '%s\tnot measured\t-\t-\t%s\t-\t%s\n' "$1" "$2" "$3"; }
ours=$build/kvteditor
probe=$build/benchmarks/window_probe
empty=$build/benchmarks/empty_window
# Of a program's values, one line for each repeat: the spread of a column.
column() { cut -d' ' -f"$2" "$work/$1" | spread; }
# A program's own messages matter only when it fails.
quietly() { "$@" 2>"$work/errors" || { tail -n 5 "$work/errors" >&2; say "$1 failed"; exit 1; }; }
measure() { quietly "$probe" "$1" "${@:3}" >>"$work/$2"; }

declare -A command_of=([ghex]=ghex [okteta]=okteta [wxhexeditor]=wxHexEditor)
tools=()
for package in ghex okteta wxhexeditor; do
  if has "${command_of[$package]}"; then
    tools+=("$package")
  else
    say "there is no $package; scripts/setup.sh $package installs it"
  fi
done
for program in "$ours" "$probe" "$empty" "$build/benchmarks/"bench_{items,scroll}; do
  [[ -x $program ]] || say "there is no $program; build it first"
done

compare_start() {
  local what="start of the program to the first frame, warm, under Xvfb" tool fastest=
  if [[ ! -x $ours || ! -x $probe || ${#tools[@]} -lt 3 ]]; then
    not_measured "$what" "fastest of ghex, okteta, wxhexeditor" "<= 1.0"
    not_measured "$what, beside an empty window" "empty window" "<= 1.3"
    return
  fi
  # One after the other in each round, so that all meet the same machine; the first round warms the caches.
  for ((i = 0; i <= repeats; ++i)); do
    rm -f "$work/warm"
    for tool in ours "${tools[@]}"; do
      local values=$tool.start program=$ours
      ((i > 0)) || values=warm
      [[ $tool == ours ]] || program=${command_of[$tool]}
      measure frame "$values" "$program"
    done
    measure frame "$( ((i > 0)) && echo empty.start || echo warm)" "$empty"
  done
  for tool in "${tools[@]}"; do
    say "start of $tool: $(column "$tool.start" 1) ms"
    if [[ -z $fastest ]] \
      || awk -v a="$(column "$tool.start" 1)" -v b="$(column "$fastest.start" 1)" 'BEGIN { exit !(a + 0 < b + 0) }'; then
      fastest=$tool
    fi
  done
  line "$what" "$(column ours.start 1)" ms "$(column "$fastest.start" 1)" "$fastest" 1.0
  line "$what, beside an empty window" "$(column ours.start 1)" ms "$(column empty.start 1)" "empty window" 1.3
}

compare_memory() {
  local what=$1
  shift
  if [[ ! -x $ours || ! -x $probe ]] || ! has okteta; then
    not_measured "$what, resident" okteta "<= 1.0"
    not_measured "$what, proportional" okteta "<= 1.0"
    return
  fi
  rm -f "$work"/*.memory
  for ((i = 0; i < repeats; ++i)); do
    measure memory ours.memory "$ours" "$@"
    measure memory okteta.memory okteta "$@"
    (($#)) || measure memory empty.memory "$empty"
  done
  line "$what, resident" "$(column ours.memory 1)" MiB "$(column okteta.memory 1)" okteta 1.0
  line "$what, proportional" "$(column ours.memory 2)" MiB "$(column okteta.memory 2)" okteta 1.0
  (($#)) || line "$what, resident, beside an empty window" "$(column ours.memory 1)" MiB "$(column empty.memory 1)" \
    "empty window" 1.3
}

compare_lists() {
  local bench=$build/benchmarks/bench_items name many few
  if [[ ! -x $bench ]]; then
    not_measured "100,000 items in an answer to the list drawn" "limit" "<= 1.0"
    return
  fi
  for ((i = 0; i < repeats; ++i)); do
    for count in 10000 100000; do
      BENCH_ITEMS=$count quietly "$bench" >>"$work/items$count"
    done
  done
  cut -f1 "$work/items100000" | head -n "$(($(wc -l <"$work/items100000") / repeats))" >"$work/names"
  while read -r name; do
    many=$(awk -F'\t' -v n="$name" '$1 == n { print $2 }' "$work/items100000" | spread)
    line "100,000 items in an answer to the list drawn: $name" "$many" ms 300 "limit" 1.0
    # Of this the time computed: it grows with the items only, whatever else the machine does.
    many=$(awk -F'\t' -v n="$name" '$1 == n { print $3 }' "$work/items100000" | spread)
    few=$(awk -F'\t' -v n="$name" '$1 == n { print $3 }' "$work/items10000" | spread)
    line "100,000 items against 10,000, computed: $name" "$many" ms "$few" "ourselves" 12
  done <"$work/names"
}

compare_scrolling() {
  local bench=$build/benchmarks/bench_scroll what="256 MiB scrolled by Page Down for 1,000 pages"
  if [[ ! -x $bench ]]; then
    not_measured "$what, slowest frame" "limit" "<= 1.0"
    not_measured "$what, memory against page 100" "ourselves" "<= 1.01"
    return
  fi
  head -c 256M /dev/urandom >"$work/image.kvt"
  for ((i = 0; i < repeats; ++i)); do
    BENCH_FILE=$work/image.kvt quietly "$bench" >>"$work/scroll"
  done
  value() { sed -n "s/^$1 \([0-9.]*\) .*/\1/p" "$work/scroll" | spread; }
  say "median frame while scrolling: $(value 'page, median') ms"
  line "$what, slowest frame" "$(value 'page, slowest')" ms 12 "limit" 1.0
  line "$what, 99th of 100 frames" "$(value 'page, 99th')" ms 8.3 "limit" 1.0
  line "$what, memory against page 100" "$(value 'memory after page 1000')" MiB \
    "$(value 'memory after page 100')" "ourselves" 1.01
}

# Each key to the frame that shows it, first plain, then with everything in sight that can be.
compare_editing() {
  local bench=$build/benchmarks/bench_scroll key shows
  [[ -x $bench ]] || return 0
  cp "$work/image.kvt" "$work/other.kvt"
  printf 'other' | dd of="$work/other.kvt" conv=notrunc status=none
  for key in right digit page; do
    for shows in "" ", compared, matches marked, panel open"; do
      [[ $key != page || $shows ]] || continue
      rm -f "$work/scroll"
      for ((i = 0; i < repeats; ++i)); do
        BENCH_FILE=$work/image.kvt BENCH_KEY=$key BENCH_OTHER=${shows:+$work/other.kvt} quietly "$bench" >>"$work/scroll"
      done
      line "1,000 times the key $key in 256 MiB$shows, slowest frame" "$(value 'page, slowest')" ms 16 "limit" 1.0
    done
  done
}

compare_start
compare_memory "memory after start"
head -c 64M /dev/urandom >"$work/file.kvt"
compare_memory "memory with a 64 MiB file open" "$work/file.kvt"
compare_lists
compare_scrolling
compare_editing
