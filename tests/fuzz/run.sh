#!/usr/bin/env bash
# Builds the fuzzers and runs each for a while, two at a time, from the seeds. Ends with 1 when one of them finds
# something; the inputs found are then in BUILD-FOLDER/finds, beside the fuzzers' logs in BUILD-FOLDER/logs.
#   tests/fuzz/run.sh SECONDS [BUILD-FOLDER [TARGET...]]   (build/fuzz by default, every target)
set -euo pipefail
export LC_ALL=C

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top=$(cd "$here/../.." && pwd)
if [[ ! ${1:-} =~ ^[1-9][0-9]*$ ]]; then
  echo "usage: tests/fuzz/run.sh SECONDS [BUILD-FOLDER [TARGET...]]" >&2
  exit 2
fi
seconds=$1
build=${2:-$top/build/fuzz}
targets=("${@:3}")
if ((${#targets[@]} == 0)); then
  for seeds in "$here"/seeds/*/; do targets+=("$(basename "$seeds")"); done
fi

(cd "$top" && cmake --preset fuzz -B "$build" >/dev/null)
build=$(cd "$build" && pwd)
cmake --build "$build" --parallel 2 --target "${targets[@]/#/fuzz_}"

finds=$build/finds
logs=$build/logs
mkdir -p "$finds" "$logs"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Where a fuzzer ends early it leaves the home that it made itself.
mkdir "$work/tmp"
export TMPDIR=$work/tmp
export LSAN_OPTIONS=suppressions=$top/tests/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1

dictionary() {
  case $1 in
    HttpAnswer) echo "-dict=$here/http.dict" ;;
    JsonReading | KvtInfo | ModuleLines | RowModel | ServiceAnswers | ServiceConfig | WorkerAnswer)
      echo "-dict=$here/json.dict"
      ;;
  esac
}

# What the engine adds to the corpus goes into the first folder; the seeds are only read.
fuzz() {
  local name=$1 options=()
  rm -f "$finds/$name"-*
  mkdir "$work/$name"
  mapfile -t options < <(dictionary "$name")
  "$build/tests/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=3072 -print_final_stats=1 \
    -artifact_prefix="$finds/$name-" "${options[@]}" "$work/$name" "$here/seeds/$name" >"$logs/$name.log" 2>&1 || true
}

running=0
for name in "${targets[@]}"; do
  if ((running == 2)); then
    wait -n
    running=$((running - 1))
  fi
  fuzz "$name" &
  running=$((running + 1))
done
wait

statistic() { sed -n "s/^stat::$2: *//p" "$logs/$1.log"; }
# Slow inputs are noted by the engine too, but break nothing.
found() { find "$finds" -name "$1-*" ! -name "$1-slow-unit-*" | wc -l; }

row() { printf '%-16s %10s %10s %8s %6s\n' "$@"; }
row target runs runs/s edges finds
bad=0
for name in "${targets[@]}"; do
  runs=$(statistic "$name" number_of_executed_units)
  edges=$(sed -n 's/.* cov: \([0-9]*\).*/\1/p' "$logs/$name.log" | tail -1)
  count=$(found "$name")
  # A fuzzer that did not come to its end found something, even where it left no input.
  if ((count > 0)) || ! grep -aq '^Done ' "$logs/$name.log"; then
    bad=1
    [[ $count != 0 ]] || count="?"
  fi
  row "$name" "${runs:--}" "$(statistic "$name" average_exec_per_sec)" "${edges:--}" "$count"
done
if ((bad)); then
  echo "run: something was found: see $finds and $logs" >&2
fi
exit "$bad"
