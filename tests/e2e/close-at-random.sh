#!/usr/bin/env bash
# Closes the real program's window at random moments while it works, on a display of its own.
#   tests/e2e/close-at-random.sh [--seed N] [--limit SECONDS] [COUNT [BUILD-FOLDER]]   (200, build/release)
# Each run starts the program on a file, has it work by real keys and clicks before the stand-in service, and
# presses the close button up to two seconds after the first picture, or up to a quarter of a second after its
# search or its upload has begun. The program must then end with code 0 within the limit (10 s), say nothing on
# standard error or in its log, and leave nothing but the log in its temporary folder. A series of 20 or more
# must have closed it at least once during a search, and once during an upload. Run I of a series has the seed
# N + I, so that a failing one is repeated with its own seed and a count of 1; without --seed the first one is
# drawn, and printed.
set -euo pipefail
export LC_ALL=C

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
usage() {
  sed -n '3s/^# *//p' "${BASH_SOURCE[0]}" >&2
  exit 2
}
if [[ -z ${KVTEDITOR_OWN_DISPLAY-} ]]; then
  KVTEDITOR_OWN_DISPLAY=1 exec "$here/with-display.sh" "${BASH_SOURCE[0]}" "$@"
fi

command -v xdotool >/dev/null || { echo "close-at-random: there is no xdotool; scripts/setup.sh installs it" >&2 && exit 2; }
seed=$((RANDOM * 32768 + RANDOM))
limit=10
while [[ ${1-} == --* ]]; do
  [[ ${2-} =~ ^[0-9]+$ ]] || usage
  case $1 in
    --seed) seed=$2 ;;
    --limit) limit=$2 ;;
    *) usage ;;
  esac
  shift 2
done
count=${1-200}
[[ $# -le 2 && $count =~ ^[1-9][0-9]*$ ]] || usage
build=$(cd "${2-$here/../../build/release}" && pwd)
editor=$build/kvteditor
button=$build/tests/e2e/kvteditor_close_button
patience=120
tree_folders=${KVTEDITOR_SCAN_FOLDERS-20000}

work=$(mktemp -d)
service=
program=
watchdog=
finish() {
  local process
  for process in $watchdog $program $service; do
    kill -CONT "$process" 2>/dev/null || true
    kill "$process" 2>/dev/null || true
  done
  wait
  rm -rf "$work"
}
trap finish EXIT

start_service() {
  mkfifo "$work/said"
  "$build/devservice/kvteditor-devservice" --sample-data "$work/samples" --port-file "$work/port" \
    --config-file "$work/service.json" >"$work/said" &
  service=$!
  # All files are written when it says that it listens. The pipe stays open: it may say more.
  exec 8<"$work/said"
  local line=
  until [[ $line == Listening* ]]; do read -r line <&8; done
  port=$(<"$work/port")
}

# Tells the service something; it answers and closes.
tell() {
  local path=$1 body=${2-}
  exec 7<>"/dev/tcp/127.0.0.1/$port"
  printf 'POST %s HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\nContent-Length: %d\r\n\r\n%s' \
    "$path" "${#body}" "$body" >&7
  local status
  read -r status <&7
  exec 7<&- 7>&-
  [[ $status == *" 200 "* ]] || { echo "close-at-random: $path: $status" >&2 && return 1; }
}

# Far below the folder, so that the search is on its way to each of them for a while.
make_tree() {
  local depth
  printf -v depth 'a/%.0s' {1..900}
  mkdir -p "$work/files/tree/$depth"
  (cd "$work/files/tree/$depth" && seq "$tree_folders" | xargs mkdir)
}

is_sanitized() { grep -q '^KVTEDITOR_SANITIZE:[^=]*=.' "$build/CMakeCache.txt"; }
is_running() { kill -0 "$program" 2>/dev/null; }
by_hand() {
  is_running || return 1
  xdotool "$@" 2>>"$work/hand" && return
  echo "xdotool $* failed" >>"$work/hand"
  return 1
}
keys() { by_hand key --delay "$pace" "$@"; }
click() { by_hand mousemove "$1" "$2" click 1; }

# What a user does, over and over, until the window is gone. Blind, as a hurried user is: a key that comes too
# early for a dialog goes to what is behind it.
ask_the_service() {
  keys ctrl+9 ctrl+f Return && keys ctrl+0 ctrl+f Return && keys ctrl+7 ctrl+f Return && keys ctrl+2 Tab space
}
search_a_folder() {
  keys Escape ctrl+4 ctrl+f ctrl+a z z Return && keys Tab Return && keys ctrl+f Return Return Return Return Return Return
}
open_dialogs() {
  keys ctrl+1 ctrl+o Down Up Down && keys Escape ctrl+s Tab && keys Escape ctrl+4 ctrl+f Return Down
}
edit_bytes() { keys ctrl+h ctrl+f F F Return F3 F3 && keys Next Down Down ctrl+f 0 0 Return; }
click_about() { click $((100 + RANDOM % 1400)) $((100 + RANDOM % 860)); }
use() {
  RANDOM=$2
  while "$1"; do :; done
}

bent_answers=(none slow short-body json-64m body-64m endless-body deflate-bomb redirect-loop status:500:html)

# Sets what the user does, and what the service does to that; the latter may be to stand still, as a line does
# on which nothing moves.
arrange() {
  act=ask_the_service
  fault=hold
  file=$work/files/truck.kvt
  stands_still=
  case $1 in
    requests) ;;
    upload) file=$work/files/large.kvt stands_still=1 ;;
    answers) fault=${bent_answers[RANDOM % ${#bent_answers[@]}]} ;;
    scan) act=search_a_folder ;;
    dialogs) act=open_dialogs ;;
    bytes) act=edit_bytes file=$work/files/large.kvt ;;
    clicks) act=click_about ;;
  esac
  cp "$work/samples/one-module.kvt" "$work/files/truck.kvt"
  rm -f "$work/files/large.kvt"
  truncate -s 64M "$work/files/large.kvt"
}

# The service's end of a connection counts as soon as the program's first packet was answered.
has_connection() {
  local wanted
  printf -v wanted ' 0100007F:%04X 01 ' "$port"
  grep -q "$wanted" /proc/net/tcp
}
# 64 KiB or more of what is sent that the service, as it stands still, has not read.
has_upload() {
  local wanted
  printf -v wanted ': 0100007F:%04X 0100007F:[0-9A-F]* 01 [0-9A-F]*:0*[1-9A-F][0-9A-F]\\{4,\\} ' "$port"
  grep -q "$wanted" /proc/net/tcp
}
# The threads without a name of their own, which have the program's.
nameless_threads() {
  local thread name
  for thread in "/proc/$program/task/"*; do
    [[ ${thread##*/} != "$program" ]] || continue
    read -r name <"$thread/comm" || continue
    [[ $name != kvteditor ]] || echo "${thread##*/}"
  done 2>/dev/null
}
# Of these only a search starts one, in a run without large files. A thread of a sanitizer was there before.
has_scan() { [[ $kind == scan && $(nameless_threads) != "$threads_before" ]]; }

wait_for() {
  local end=$((SECONDS + patience))
  until "$1"; do
    is_running && ((SECONDS < end)) || return 1
    sleep 0.01
  done
}

# Sleeps for less than that many milliseconds.
rest() {
  local moment
  printf -v moment '%04d' $((RANDOM % $1))
  sleep "${moment:0:1}.${moment:1}"
}

start_program() {
  local drawing=(QSG_RHI_BACKEND=opengl)
  # What a graphics driver leaks is nameless once it is unloaded, and cannot be suppressed.
  if ((RANDOM % 2)) || is_sanitized; then drawing=(QT_QUICK_BACKEND=software); fi
  rm -rf "$work/run"
  mkdir -p "$work/run/home" "$work/run/tmp" "$work/run/path"
  mkdir -m 700 "$work/run/runtime"
  # Takes an address, and opens nothing.
  ln -s "$(type -P true)" "$work/run/path/xdg-open"
  local environment=(
    # Nothing else on the path, so no browser.
    "PATH=$work/run/path" "LANG=C.UTF-8" "HOME=$work/run/home" "XDG_CONFIG_HOME=$work/run/home/config"
    "TMPDIR=$work/run/tmp" "XDG_RUNTIME_DIR=$work/run/runtime" "DISPLAY=$DISPLAY" "QT_QPA_PLATFORM=xcb" "DBUS_SESSION_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS"
    "KVTEDITOR_SERVICE_CONFIG=$work/service.json" "${drawing[@]}"
    "LSAN_OPTIONS=${LSAN_OPTIONS-suppressions=$here/../lsan.supp:print_suppressions=0}"
  )
  local name
  for name in ASAN_OPTIONS UBSAN_OPTIONS TSAN_OPTIONS; do
    [[ -z ${!name-} ]] || environment+=("$name=${!name}")
  done
  (cd "$work/run/path" && exec env -i "${environment[@]}" "$editor" "$file") >"$work/out" 2>&1 &
  program=$!
}

# Ends the program when it does not.
watch() {
  local timer
  trap 'kill "$timer" 2>/dev/null; exit' TERM
  sleep "$1" &
  timer=$!
  wait "$timer"
  kill -KILL "$program" 2>/dev/null || true
}

complaints=()
complain_of_log() {
  # Left out is what Qt says now and then: its OpenGL drawing when it ends during an animation, and 6.11 of a view that
  # was still being made.
  grep -vx -e 'QUnifiedTimer::stopAnimationDriver: driver is not running' \
    -e '"There are still .* items in the process of being created at engine destruction."' "$work/run/tmp/kvteditornew-qt.log" >"$work/log" || true
  diff - "$work/log" >"$work/differences" <<'LOG' || complaints+=("in the log: $(<"$work/differences")")
main: start
main: constructing AppState
main: loading QML
main: event loop
LOG
}

# While it is in use, up to the moment at which it is to be closed.
wait_for_moment() {
  local most=250
  case $kind in
    scan) wait_for has_scan || complaints+=("it never searched") ;;
    upload) wait_for has_upload || complaints+=("it never sent its file") ;;
    *) most=2000 ;;
  esac
  rest "$most"
}

note_state() {
  state=
  if has_connection; then state+=", connected" with_connection=$((with_connection + 1)); fi
  if has_upload; then state+=", sending" with_upload=$((with_upload + 1)); fi
  if has_scan; then state+=", searching" with_scan=$((with_scan + 1)); fi
}

kinds=(requests upload answers scan dialogs bytes clicks)
longest=0 longest_seed=- total=0 late=0 with_connection=0 with_upload=0 with_scan=0 failures=0
run() {
  local kind=${kinds[$1 % ${#kinds[@]}]} user='' begun shown ended code=0 state=''
  RANDOM=$(($1 % 32768))
  pace=$((5 + RANDOM % 60))
  arrange "$kind"
  tell /_dev/clear
  tell /_dev/faults "{\"endpoint\":\"*\",\"fault\":\"$fault\"}"
  [[ -z $stands_still ]] || kill -STOP "$service"
  complaints=()
  : >"$work/hand"

  start_program
  if timeout "$patience" "$button" await "$program"; then
    shown=${EPOCHREALTIME/./}
    threads_before=$(nameless_threads)
    use "$act" "$1" &
    user=$!
    wait_for_moment
    note_state
  else
    complaints+=("it showed no picture")
  fi
  watch "$limit" &
  watchdog=$!
  begun=${EPOCHREALTIME/./}
  if ! "$button" press "$program"; then
    complaints+=("there was no window to close")
    kill "$program" 2>/dev/null || true
  fi
  wait "$program" || code=$?
  ended=${EPOCHREALTIME/./}
  kill "$watchdog" 2>/dev/null || true
  wait "$watchdog" 2>/dev/null || true
  watchdog='' program=''
  [[ -z $user ]] || wait "$user" || true
  kill -CONT "$service"
  tell /_dev/clear
  tell /_dev/release

  local took=$(((ended - begun) / 1000))
  total=$((total + took))
  ((took <= 1000)) || late=$((late + 1))
  if ((took > longest)); then longest=$took longest_seed=$1; fi
  ((code == 0)) || complaints+=("exit code $code")
  [[ ! -s $work/out ]] || complaints+=("it said: $(<"$work/out")")
  complain_of_log
  local left
  left=$(find "$work/run/tmp" -mindepth 1 ! -name kvteditornew-qt.log)
  [[ -z $left ]] || complaints+=("left: $left")
  [[ ! -s $work/hand ]] || complaints+=("of its use: $(<"$work/hand")")
  printf 'seed %d: %s (%s), closed after %d ms%s: ended in %d ms\n' "$1" "$kind" "$fault" \
    $(((begun - ${shown-$begun}) / 1000)) "$state" "$took"
  if ((${#complaints[@]})); then
    printf '  %s\n' "${complaints[@]}"
    failures=$((failures + 1))
  fi
}

mkdir "$work/files"
start_service
make_tree
for ((i = 0; i < count; ++i)); do run $((seed + i)); done
printf 'close-at-random: %d run(s) from seed %d: longest exit %d ms (seed %s), mean %d ms, %d above 1 s\n' \
  "$count" "$seed" "$longest" "$longest_seed" $((total / count)) "$late"
printf 'close-at-random: %d with a connection open, %d during an upload, %d during a search; %d failed\n' \
  "$with_connection" "$with_upload" "$with_scan" "$failures"
if ((count >= 20 && (with_scan == 0 || with_upload == 0))); then
  echo "close-at-random: no run was closed during a search, or none during an upload" >&2
  exit 1
fi
((failures == 0))
