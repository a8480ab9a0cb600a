#!/usr/bin/env bash
# Compares the editor with public tools that do the same work. After a warm-up run, the two run alternately, five times
# each; prints medians and ratios. The peak memory of the whole program and the program's own memory, which is
# subtracted from the peaks of transfers, are measured once. Makes its own data, some 3 GB in the temporary folder, and
# takes less than ten minutes. Writes docs/performance.md with this and up to two earlier runs of the same program, and
# fails when a required figure is not reached in each of them.
#   benchmarks/compare.sh [--only REGEX] [BUILD-FOLDER]    BUILD-FOLDER: a Release build, build/release by default
# With --only, just the groups whose names match are measured (idle search find open row edit sorter upload transfer
# window), and no document is written.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top=$(dirname "$here")
runs_shown=3

usage() {
  sed -n '2,/^set/s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
  exit "$1"
}
die() {
  printf 'compare: %s\n' "$1" >&2
  exit 2
}

# Called by itself on a display. The first pair warms the caches.
if [[ ${1-} == --starts ]]; then
  # shellcheck source=benchmarks/figures.sh
  source "$here/figures.sh"
  for ((i = 0; i <= repeats; ++i)); do
    without=$(BENCH_BEGIN=$(date +%s%N) "$2") with=$(BENCH_BEGIN=$(date +%s%N) "$2" "$3")
    ((i == 0)) || awk -v o="$with" -v t="$without" 'BEGIN { printf "%.1f\n", o - t }'
  done
  exit
fi

only=
while (($#)); do
  case $1 in
    -h | --help) usage 0 ;;
    --only) only=${2:?--only needs a pattern} && shift 2 ;;
    -*) usage 2 >&2 ;;
    *) break ;;
  esac
done
(($# <= 1)) || usage 2 >&2
build=$(cd "${1:-$top/build/release}" 2>/dev/null && pwd) || die "there is no folder ${1:-build/release}"
grep -q '^CMAKE_BUILD_TYPE:.*=Release$' "$build/CMakeCache.txt" || die "only a Release build's figures mean anything"
once=$build/benchmarks/bench_once
for program in "$once" "$build"/benchmarks/bench_{hex,open,start,upload} "$build"/benchmarks/{window_probe,empty_window} \
  "$build/devservice/kvteditor-devservice"; do
  [[ -x $program ]] || die "there is no $program; build it first"
done
for tool in curl find; do
  command -v "$tool" >/dev/null || die "there is no $tool on this machine"
done

# shellcheck source=benchmarks/figures.sh
source "$here/figures.sh"
work=$(mktemp -d)
rows=$work/rows
: >"$rows"
service=
idle=
stop_nginx() { [[ ! -f $work/nginx.pid ]] || kill "$(<"$work/nginx.pid")" 2>/dev/null || true; }
finish() {
  # With all that it started.
  [[ -z $idle ]] || kill -- -"$idle" 2>/dev/null || true
  [[ -z $service ]] || kill "$service" 2>/dev/null || true
  stop_nginx
  rm -rf "$work"
}
trap finish EXIT

### Measuring

# Milliseconds of a command, its output thrown away.
clock() {
  local begin end
  begin=$(date +%s%N)
  "$@" >/dev/null
  end=$(date +%s%N)
  awk -v b="$begin" -v e="$end" 'BEGIN { printf "%.2f\n", (e - b) / 1e6 }'
}

# Runs two commands in turn, each of which prints one figure, and leaves their spreads in $ours and $theirs.
in_turn() {
  local i
  "$1" >/dev/null
  "$2" >/dev/null
  rm -f "$work/first" "$work/second"
  for ((i = 0; i < repeats; ++i)); do
    "$1" >>"$work/first"
    "$2" >>"$work/second"
  done
  ours=$(spread <"$work/first") theirs=$(spread <"$work/second")
}

row() { line "$@" | tee -a "$rows"; }

# How much of the processors others take in a second in which nothing is measured, in percent.
times() { awk '/^cpu / { for (i = 2; i <= 9; ++i) sum += $i; print sum, $5 + $6 }' /proc/stat; }
watch_others() {
  local before
  # What the last group wrote.
  sync
  before=$(times)
  sleep 1
  awk -v b="$before" -v a="$(times)" 'BEGIN {
    split(b, x, " "); split(a, y, " ")
    printf "%.0f\n", 100 * (1 - (y[2] - x[2]) / (y[1] - x[1])) }' >>"$work/others"
}

# The real program with a file in its hex editor; the service's address is the argument before it.
open_in_editor() {
  printf '{"apiBase": "%s"}\n' "$1" >"$work/service.json"
  HOME=$work XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work KVTEDITOR_SERVICE_CONFIG=$work/service.json \
    QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software BENCH_FILE=$2 "$build/benchmarks/bench_open"
}
figure() { awk -v name="$1" '$1 == name { print $2 }'; }

### The groups

# Five minutes without anybody's doing, meanwhile the rest is measured.
start_idle() {
  printf '{"apiBase": "https://127.0.0.1:9/api/"}\n' >"$work/idle.json"
  HOME=$work XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work KVTEDITOR_SERVICE_CONFIG=$work/idle.json \
    setsid "$top/tests/e2e/with-display.sh" "$build/benchmarks/window_probe" idle "$build/kvteditor" \
    >"$work/idle" 2>"$work/idle.errors" &
  idle=$!
  # Until it is.
  sleep 5
}
measure_idle() {
  wait "$idle" || die "the idle window failed: $(tail -n 1 "$work/idle.errors")"
  idle=
  row "processor time of the idle window in five minutes" "$(<"$work/idle")" ms 10 "a tick" 1.0
}

# 1000 files in each folder: 600 tune files and 400 others.
make_tree() {
  local root=$1 folders=$2 folder
  for ((folder = 0; folder < folders; ++folder)); do
    local path=$root/make$((folder % 7))/model$folder
    mkdir -p "$path"
    (cd "$path" && seq -f "e38_%08.0f_2015.kvt" $((folder * 1000)) $((folder * 1000 + 599)) | xargs touch \
      && seq -f "note_%08.0f.txt" $((folder * 1000)) $((folder * 1000 + 399)) | xargs touch)
  done
}

suffixes=(-type f '(' -iname '*.kvt' -o -iname '*.ctz' ')' -printf '%s %p\n')
scan_few() { "$once" scan "$work/tree" e38_00099599 0; }
scan_all() { "$once" scan "$work/tree" "" 0; }
scan_large() { "$once" scan "$work/large" "" 0; }
find_all() { clock find "$work/tree" "${suffixes[@]}"; }
find_large() { clock find "$work/large" "${suffixes[@]}"; }
measure_search() {
  local find="find -printf '%s %p\\n'"
  make_tree "$work/tree" 100
  in_turn scan_few find_all
  row "folder search, 100,000 files, hardly any match" "$ours" ms "$theirs" "$find" 1.0
  in_turn scan_all find_all
  row "folder search, 100,000 files, 60,000 match, no limit" "$ours" ms "$theirs" "$find" 0.8
  make_tree "$work/large" 1000
  in_turn scan_large scan_all
  row "folder search, 1,000,000 files against 100,000" "$ours" ms "$theirs" "itself" 10
  in_turn find_large find_all
  row "the same two folders with find" "$ours" ms "$theirs" "itself" -
  rm -rf "$work/tree" "$work/large"
}

find_row() {
  "$once" find "$1" "$2" $((repeats + 1)) | tail -n "$repeats" >"$work/pairs"
  row "find in 256 MiB of $3, $2 bytes, absent" "$(cut -d' ' -f1 "$work/pairs" | spread)" ms \
    "$(cut -d' ' -f2 "$work/pairs" | spread)" "memchr" "$4"
}
measure_find() {
  local data length
  for data in noise zeros; do
    for length in 2 4 8 64; do find_row "$data" "$length" "$data" 2; done
  done
  find_row crowded-noise 8 "noise, each byte frequent" -
  find_row two-values 64 "two values, both frequent" -
}

# Nobody listens at that address: the identifiers are asked for as always, and refused at once.
open_ours() { open_in_editor https://127.0.0.1:9/api/ "$work/image.bin" | tee -a "$work/opened" | figure drawn; }
open_theirs() { clock cat "$work/image.bin"; }
measure_open() {
  head -c 256M /dev/urandom >"$work/image.bin"
  in_turn open_ours open_theirs
  row "open 256 MiB to the first drawn row" "$ours" ms "$theirs" "cat FILE >/dev/null" 3.0
  row "memory after opening 256 MiB" "$(figure opened <"$work/opened" | tail -n $repeats | spread)" MiB 256 "the file's size" 1.1
  row "memory after a patch in 256 MiB" "$(figure patched <"$work/opened" | tail -n $repeats | spread)" MiB 256 "the file's size" 2.1
  rm "$work/image.bin"
}

measure_row() {
  local microseconds
  microseconds=$("$build/benchmarks/bench_hex" --benchmark_filter='^oneRow$' --benchmark_repetitions="$repeats" \
    --benchmark_report_aggregates_only=true --benchmark_format=csv 2>/dev/null \
    | awk -F, '/_median/ { printf "%.2f", $3 / 1000 }')
  row "one hex row, all three roles" "$microseconds" µs 1 "limit" 1.0
}

compare_ours() { "$once" compare "$work/image.bin" "$work/other.bin"; }
compare_theirs() { clock cmp "$work/image.bin" "$work/other.bin"; }
count_ours() { "$once" count "$1" "$2" $((repeats + 1)) | tail -n "$repeats" >"$work/pairs"; }
measure_edit() {
  local data length
  head -c 256M /dev/urandom >"$work/image.bin"
  cp "$work/image.bin" "$work/other.bin"
  in_turn compare_ours compare_theirs
  row "compare with another file of 256 MiB" "$ours" ms "$theirs" "cmp" 1.2
  rm "$work/image.bin" "$work/other.bin"
  for data in noise zeros; do
    for length in 2 8; do
      count_ours "$data" "$length"
      row "count all matches in 256 MiB of $data, $length bytes" "$(cut -d' ' -f1 "$work/pairs" | spread)" ms \
        "$(cut -d' ' -f2 "$work/pairs" | spread)" "memmem" 2
    done
  done
  row "undo 100,000 steps in 256 MiB" "$("$once" undo 100000)" ms 1000 "limit" 1.0
}

sort_ours() { rm -rf "$work/sorted" && "$once" sort "$work/sorted" "$work/sources"; }
copy_theirs() { rm -rf "$work/copied" && mkdir "$work/copied" && clock cp "$work/sources/"*.kvt "$work/copied"; }
measure_sorter() {
  local i
  mkdir "$work/sources"
  for ((i = 0; i < 2000; ++i)); do
    head -c 65536 /dev/urandom >"$work/sources/e38_$((12650000 + i % 20))_${i}_201$((i % 10)).kvt"
  done
  in_turn sort_ours copy_theirs
  row "sorter, 2,000 files of 64 KiB" "$ours" ms "$theirs" "cp" 1.3
  rm -rf "$work/sources" "$work/sorted" "$work/copied"
}

base=
upload_ours() { clock "$once" upload "$base" "$work/upload.kvt"; }
upload_theirs() {
  clock curl --silent --show-error -F version=4.0.2 -F operation=kvt_info -F "file=@$work/upload.kvt" \
    "${base}kvt_worker/process.aspx"
}
peak_ours() { open_in_editor "$base" "$work/upload.kvt" | figure peak; }
measure_upload() {
  "$build/devservice/kvteditor-devservice" --port-file "$work/port" >/dev/null &
  service=$!
  while [[ ! -s $work/port ]]; do
    kill -0 "$service" || die "the stand-in service did not start"
    sleep 0.1
  done
  base=http://127.0.0.1:$(<"$work/port")/api/
  head -c 64M /dev/urandom >"$work/upload.kvt"
  in_turn upload_ours upload_theirs
  row "upload of 64 MiB" "$ours" ms "$theirs" "curl -F" 1.5
  row "peak memory of the program, 64 MiB opened and sent" "$(peak_ours)" MiB 64 "the file's size" 3
  rm "$work/upload.kvt"
}

# Beside curl, over TLS with nginx on loopback, whose certificate is made here. An inner server of the same nginx takes
# uploads; it answers only after it has the whole body.
nginx_settings() {
  cat <<END
pid $work/nginx.pid; error_log $work/nginx.log; $( ((EUID)) || echo "user $(id -un);")
events {}
http {
  access_log off; client_max_body_size 0; default_type application/octet-stream; types {}
  client_body_temp_path $work/nginx; proxy_temp_path $work/nginx; fastcgi_temp_path $work/nginx;
  uwsgi_temp_path $work/nginx; scgi_temp_path $work/nginx;
  server {
    listen 127.0.0.1:$1 ssl; ssl_certificate $work/server.pem; ssl_certificate_key $work/server.key;
    root $work/www;
    location /gzip/ { alias $work/www/; gzip_static on; }
    location /chunked/ { alias $work/www/; sub_filter_types *; sub_filter '<nowhere>' ''; }
    location /api/ { proxy_pass http://unix:$work/inner:; proxy_request_buffering off; proxy_http_version 1.1; }
  }
  server {
    listen unix:$work/inner;
    location / {
      client_body_in_file_only clean; client_body_buffer_size 1m;
      proxy_pass http://unix:$work/answer:; proxy_pass_request_body off; proxy_set_header Content-Length '';
    }
  }
  server {
    listen 127.0.0.1:$(($1 + 1000));
    location / { proxy_pass http://unix:$work/inner:; proxy_request_buffering off; proxy_http_version 1.1; }
  }
  server {
    listen unix:$work/answer;
    location / { default_type application/json; return 200 '{"status":"ok","vin":"1FTSW21P05ED12345"}'; }
  }
}
END
}
start_nginx() {
  local port
  mkdir "$work/nginx" "$work/www"
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost -addext subjectAltName=IP:127.0.0.1 \
    -keyout "$work/server.key" -out "$work/server.pem" 2>/dev/null
  for port in 28443 28444 28445; do
    nginx_settings "$port" >"$work/nginx.conf"
    if nginx -e "$work/nginx.log" -c "$work/nginx.conf" 2>/dev/null; then
      peer=https://127.0.0.1:$port
      plain_peer=http://127.0.0.1:$((port + 1000))
      return
    fi
  done
  die "nginx did not start: $(tail -n 1 "$work/nginx.log")"
}

peer=
plain_peer=
export BENCH_AUTHORITY=$work/server.pem
# Each prints its milliseconds; ours also appends its peak memory to $work/peaks.
transfer_ours() {
  "$once" "${ours_does[@]}" >"$work/transfer"
  cut -d' ' -f2 "$work/transfer" >>"$work/peaks"
  cut -d' ' -f1 "$work/transfer"
}
transfer_theirs() { clock curl --silent --show-error --fail --cacert "$BENCH_AUTHORITY" "${theirs_does[@]}"; }
transfer_rows() {
  local what=$1 size=$2
  rm -f "$work/peaks"
  in_turn transfer_ours transfer_theirs
  row "$what" "$ours" ms "$theirs" "curl" 1.5
  row "$what, peak memory beyond the program's own" "$(awk -v o="$own" '{ print $1 - o }' "$work/peaks" | tail -n $repeats | spread)" \
    MiB "$size" "the file's size" 1.2
}
# On a display in memory, with the service's address before the command.
on_display() {
  printf '{"apiBase": "%s/api/"}\n' "$1" >"$work/service.json"
  env -u QT_QPA_PLATFORM -u QT_QUICK_BACKEND HOME="$work" XDG_CONFIG_HOME="$work/config" XDG_RUNTIME_DIR="$work" \
    KVTEDITOR_SERVICE_CONFIG="$work/service.json" BENCH_FILE="$work/www/64" BENCH_API="$peer/api/" \
    "$top/tests/e2e/with-display.sh" "${@:2}" 2>"$work/errors" || die "$2 failed: $(tail -n 1 "$work/errors")"
}
start_row() {
  head -c 4M /dev/urandom >"$work/tune.kvt"
  on_display "$plain_peer" "${BASH_SOURCE[0]}" --starts "$build/benchmarks/bench_start" "$work/tune.kvt" >"$work/starts"
  row "4 MiB from the command line to the identifiers, beyond the start" "$(spread <"$work/starts")" ms 15 "limit" 1.0
}
scroll_row() {
  local i
  for ((i = 0; i < repeats; ++i)); do on_display "$peer" "$build/benchmarks/bench_upload" >>"$work/busy"; done
  row "upload of 64 MiB while a list of 100,000 rows scrolls" "$(cut -d' ' -f2 "$work/busy" | spread)" ms \
    "$(cut -d' ' -f1 "$work/busy" | spread)" "at rest" 2
}
measure_transfer() {
  local size way own
  command -v nginx >/dev/null || die "there is no nginx on this machine; scripts/setup.sh nginx-light installs it"
  start_nginx
  printf x >"$work/www/1"
  own=$("$once" download "$peer/1" 1 | cut -d' ' -f2)
  for size in 64 512; do
    head -c "${size}M" /dev/urandom >"$work/www/$size"
    gzip -1 -k "$work/www/$size"
    for way in "" chunked/ gzip/; do
      ours_does=(download "$peer/$way$size" $((size << 20)))
      theirs_does=(-o "$work/answer.bin")
      [[ $way != gzip/ ]] || theirs_does+=(--compressed)
      theirs_does+=("$peer/$way$size")
      transfer_rows "download of $size MiB${way:+, ${way%/}}" "$size"
    done
    ours_does=(upload "$peer/api/" "$work/www/$size")
    theirs_does=(-o "$work/answer.bin" -F version=4.0.2 -F operation=kvt_info -F "file=@$work/www/$size"
      "$peer/api/kvt_worker/process.aspx")
    transfer_rows "upload of $size MiB over TLS" "$size"
    if ((size == 64)); then
      scroll_row
      start_row
    fi
    rm "$work/www/$size" "$work/www/$size.gz" "$work/answer.bin"
  done
  stop_nginx
}

measure_window() { "$here/compare-window.sh" "$build" | tee -a "$rows"; }

### The document

# A row is reached when its ratio, rounded to as many decimals as the limit (at least one), does not exceed it.
verdict() {
  local ours=$1 ratio=$2 required=$3
  case $ours/$required in
    "not measured"/*) echo "NOT measured" ;;
    */-) echo "for comparison" ;;
    *) awk -v r="$ratio" -v most="${required#<= }" 'BEGIN {
         decimals = length(most) - index(most ".", ".")
         print(sprintf("%.*f", decimals > 1 ? decimals : 1, r) + 0 <= most + 0 ? "reached" : "NOT reached")
       }' ;;
  esac
}

# A figure, and the least and the largest of those that it is the median of.
shown() {
  local median least=${2-} largest=${3-} unit=${*: -1}
  median=$1
  if (($# == 4)); then
    echo "$median $unit ($least to $largest)"
  else
    echo "$median $unit"
  fi
}

# The ratios of a row in all runs, this one first.
ratios() { awk -F'\t' -v w="$1" '$1 == w { printf "%s%s", sep, $6; sep = ", " }' "$rows" "${earlier[@]}"; }
worst() { ratios "$1" | tr -d , | tr ' ' '\n' | sort -g | tail -n 1; }

table() {
  local work ours unit theirs against ratio required
  echo "| work | ours | theirs | against | ratio | required | |"
  echo "|---|---:|---:|---|---:|---:|---|"
  while IFS=$'\t' read -r work ours unit theirs against ratio required; do
    # shellcheck disable=SC2086
    [[ $unit == - ]] || ours=$(shown $ours "$unit") theirs=$(shown $theirs "$unit")
    echo "| $work | $ours | $theirs | $against | $(ratios "$work") | $required |" \
      "$(verdict "$ours" "$(worst "$work")" "$required") |"
  done <"$rows"
}

# Why the given rows are missed: limits.txt has a line of "beginning of the row: reason" for each.
limits() {
  local missed
  (($#)) || echo "Every required figure is reached."
  for missed in "$@"; do
    if grep -qF "$missed"$'\tnot measured' "$rows"; then
      printf -- '- **%s**: a program that it needs was not there.\n' "$missed"
      continue
    fi
    awk -F': ' -v row="$missed" '
      index(row, $1) == 1 && !found { found = substr($0, length($1) + 3) }
      END { printf "- **%s**: %s\n", row, found ? found : "the cause is not known yet." }' "$here/limits.txt"
  done
}

missed_rows() {
  local work ours unit theirs against ratio required
  while IFS=$'\t' read -r work ours unit theirs against ratio required; do
    [[ $(verdict "$ours" "$(worst "$work")" "$required") != NOT* ]] || echo "$work"
  done <"$rows"
}

version_of() { "$@" --version | sed -nE '1s/.* ([0-9]+(\.[0-9]+)+).*/\1/p'; }
qt_version() { ldd "$once" | awk '/libQt6Core/ { print $3 }' | xargs readlink -f | sed 's/.*\.so\.//'; }
processor() { sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -1; }
memory() { awk '/^MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo; }

document() {
  cat <<END
# Performance

Written by \`benchmarks/compare.sh\`: the editor's work beside public tools that do the same, each $repeats times in
turn in one run, after a run that warms the caches; the figures are medians, followed by the least and the largest. What
has no spread was measured once.
The ratios are those of $((1 + ${#earlier[@]})) whole runs one after the other, the last one first; all else is of the
last. Do not edit it by hand.

\`\`\`sh
cmake --preset release
cmake --build --preset release
benchmarks/compare.sh
\`\`\`

| | |
|---|---|
| processor | $(nproc) cores, $(processor) |
| memory | $(memory) |
| system | $(uname -sr), $(getconf GNU_LIBC_VERSION) |
| Qt | $(qt_version) |
| beside | find $(version_of find), cp and cat $(version_of cp), curl $(version_of curl) |
| other work on the machine, in a second before each group | at most $others % of the processors$busy |
| time for all of it | $((SECONDS / 60)) minutes, $((SECONDS % 60)) seconds |

A row is reached when its ratio, rounded to as many decimals as the limit (at least one), does not exceed it in any run.
Folders, files and services are all local; files lie in the system's file cache.

$(table)

## Figures that are not reached

$(limits "${missed[@]}")

## How each is measured

- Folder search: the rule that the search view calls, without its limit of 5,000 files. A tree of folders with 1,000
  files each, 600 of them tune files. \`find\` looks for the same suffixes and prints the same: size and path. When
  hardly any match, \`find\` still prints all tune files: it is the walk that is compared.
- Idle: the processor time of the program's window while nobody touches it and all else is measured.
- Find: the hex editor's command on bytes that are not there, in turn with the C library's \`memchr\` for a byte that is
  not there on the same buffer, which is the memory's speed; in one process and in processor time. "Zeros" are searched
  for zeros with a last byte of 01, which match everywhere but in that byte. The last byte of the other needles is
  nowhere in the noise, but for those whose bytes are all frequent: there the beginning of the needle is met often.
- Open: the real program, drawn without a display, from the call that opens the file to the frame that shows its first
  row. Memory is the growth of the resident set.
- Hex row: offset, digits and characters of one row of the model, from Google Benchmark.
- Compare: from the command to the counted differences, with the one file open: the other is read and kept. Two equal
  files, which is the longest way for \`cmp\`.
- Count: matches that overlap count; \`memmem\` begins anew one byte after each match. In processor time.
- Sorter: one copy of each file in folders by year, make and number; \`cp\` copies the same files into one folder.
- Upload: a form with one file to the local stand-in of the service; the whole process from start to exit on both
  sides. The peak, measured once, is that of the whole program with its window.
- Download and upload over TLS: the same with nginx, which sends a file with its length, in chunks, or packed by gzip.
  The data are random, so the last is as long as the others. The program's own memory,
  measured once, is that after one byte.
- Start, memory beside other editors, long lists and scrolling: the real program on a display in memory, by
  \`benchmarks/compare-window.sh\`. The empty window is one of Qt Quick, of the same size and drawn the same way, in a
  program that loads the same modules of Qt Quick.
- Command line: from the program's start to the frame with the identifiers that a server of nginx, without TLS, answers
  as soon as it has the file, less the time to the first frame of a start without a file.
END
}

wanted() { [[ $1 =~ ${only:-.} ]]; }
group() {
  wanted "$1" || return 0
  local begin=$SECONDS
  watch_others
  "measure_$1"
  printf 'compare: %s took %d s\n' "$1" $((SECONDS - begin)) >&2
}
if wanted idle; then start_idle; fi
for name in search find open row edit sorter upload transfer window idle; do group "$name"; done
[[ -s $rows ]] || die "no group matches $only"

# Earlier runs count as long as they are of the same program.
runs=$build/benchmarks/runs
mkdir -p "$runs"
find "$runs" -type f ! -newer "$build/kvteditor" -delete
mapfile -t earlier < <(find "$runs" -type f -print0 | xargs -0r ls -t | head -n $((runs_shown - 1)))
[[ -z $only ]] || earlier=()
others=$(sort -g "$work/others" | tail -n 1)
busy=
((others <= 10)) || busy=": it was busy"
mapfile -t missed < <(missed_rows)
if [[ -z $only ]]; then
  document >"$work/performance.md"
  mv "$work/performance.md" "$top/docs/performance.md"
  cp "$rows" "$runs/$(date +%s)"
else
  echo && table
fi
((${#missed[@]} == 0)) || printf 'compare: not reached: %s\n' "${missed[@]}" >&2
((${#missed[@]} == 0))
