#!/usr/bin/env bash
# Times the editor's work beside public tools that do the same, in one run: five times each, warm, medians and ratios.
#   benchmarks/compare.sh [BUILD-FOLDER]   (build/release by default)
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "${1:-$top/build/release}" && pwd)
once=$build/benchmarks/bench_once
[[ -x $once ]] || { echo "compare: there is no $once; build it first" >&2; exit 1; }
work=$(mktemp -d)
service=
finish() {
  [[ -z $service ]] || kill "$service"
  rm -rf "$work"
}
trap finish EXIT
repeats=5

median() { sort -g | sed -n "$(((repeats + 1) / 2))p"; }
# Milliseconds of a command, its output thrown away.
clock() {
  local begin end
  begin=$(date +%s%N)
  "$@" >/dev/null
  end=$(date +%s%N)
  awk -v b="$begin" -v e="$end" 'BEGIN { printf "%.2f\n", (e - b) / 1e6 }'
}
times() {
  "$@" >/dev/null # warms the caches
  for ((i = 0; i < repeats; ++i)); do "$@"; done | median
}
ours() { "$once" "$@" | cut -d' ' -f1; }
row() { awk -v n="$1" -v o="$2" -v t="$3" -v w="$4" 'BEGIN { printf "%-44s %10.1f %10.1f %-14s %6.2f\n", n, o, t, w, o / t }'; }

# 1000 files in each folder, three tune files to every two others.
make_tree() {
  local root=$1 folders=$2 folder
  for ((folder = 0; folder < folders; ++folder)); do
    local path=$root/make$((folder % 7))/model$folder
    mkdir -p "$path"
    (cd "$path" && seq -f "e38_%08.0f_2015.kvt" $((folder * 1000)) $((folder * 1000 + 599)) | xargs touch \
      && seq -f "note_%08.0f.txt" $((folder * 1000)) $((folder * 1000 + 399)) | xargs touch)
  done
}

printf '%-44s %10s %10s %-14s %6s\n' "work" "ours ms" "theirs ms" "theirs" "ratio"
make_tree "$work/tree" 100
find_all() { find "$work/tree" -type f \( -iname '*.kvt' -o -iname '*.ctz' \) -printf '%s %p\n'; }
find_few() { find "$work/tree" -type f -iname '*e38_00099599*' \( -iname '*.kvt' -o -iname '*.ctz' \) -printf '%s %p\n'; }
fd_all() { fdfind --no-ignore --type f --extension kvt --extension ctz . "$work/tree"; }

few=$(times ours scan "$work/tree" e38_00099599 0)
all=$(times ours scan "$work/tree" "" 0)
their_few=$(times clock find_few)
their_all=$(times clock find_all)
row "100,000 files, hardly any match" "$few" "$their_all" "find"
row "100,000 files, hardly any match" "$few" "$their_few" "find, filtered"
row "100,000 files, 60,000 match" "$all" "$their_all" "find"
if command -v fdfind >/dev/null; then
  row "100,000 files, 60,000 match" "$all" "$(times clock fd_all)" "fdfind (names)"
fi
make_tree "$work/large" 1000
row "1,000,000 files against 100,000" "$(times ours scan "$work/large" "" 0)" "$all" "ourselves"

mkdir "$work/sources"
for ((i = 0; i < 2000; ++i)); do
  head -c 65536 /dev/urandom >"$work/sources/e38_$((12650000 + i % 20))_${i}_201$((i % 10)).kvt"
done
sort_ours() { rm -rf "$work/sorted" && ours sort "$work/sorted" "$work/sources"; }
copy_theirs() { rm -rf "$work/copied" && mkdir "$work/copied" && clock cp "$work/sources/"*.kvt "$work/copied"; }
row "sorter, 2,000 files of 64 KiB" "$(times sort_ours)" "$(times copy_theirs)" "cp"

"$build/devservice/kvteditor-devservice" --port-file "$work/port" >/dev/null &
service=$!
while [[ ! -s $work/port ]]; do kill -0 "$service" && sleep 0.1; done
base=http://127.0.0.1:$(<"$work/port")/api/
head -c $((64 << 20)) /dev/urandom >"$work/upload.kvt"
upload_ours() { clock "$once" upload "$base" "$work/upload.kvt"; }
upload_theirs() {
  clock curl --silent --show-error -F version=4.0.2 -F operation=kvt_info -F "file=@$work/upload.kvt" \
    "${base}kvt_worker/process.aspx"
}
row "upload of 64 MiB" "$(times upload_ours)" "$(times upload_theirs)" "curl -F"
