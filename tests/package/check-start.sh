#!/usr/bin/env bash
# Starts an installed editor offscreen from a folder that is not its own, with a file to open and a local
# service behind it, and closes it. Fails on any message, on standard error or in the log, and on a wrong exit
# code.
#   check-start.sh DEVSERVICE PROBE PROGRAM [ROOT]
# DEVSERVICE is the stand-in service's program, PROBE the plug-in that looks into the window. With ROOT, a
# folder with a whole system in it, PROGRAM is run there, by a user without rights, and named as it is seen from
# there; the service is then named in the system's own service file.
set -euo pipefail

devservice=$1
probe=$2
program=$3
root=${4-}
patience=180

temporary=${root:+$root/tmp}
work=$(mktemp -d "${temporary:-${TMPDIR:-/tmp}}/kvteditor-start.XXXXXX")
service=
finish() {
  [[ -z $service ]] || kill "$service" 2>/dev/null || true
  rm -rf "$work"
}
trap finish EXIT
inside=${work#"$root"}

mkdir -m 700 "$work/runtime"
mkdir "$work/home" "$work/tmp" "$work/elsewhere" "$work/plugins" "$work/plugins/generic"
cp "$probe" "$work/plugins/generic/"
mkfifo "$work/said"
"$devservice" --sample-data "$work/samples" --config-file "$work/service.json" >"$work/said" &
service=$!
# All files are written when it says that it listens. The pipe stays open: it may say more.
exec 8<"$work/said"
until [[ ${line-} == Listening* ]]; do read -r line <&8; done

environment=(
  "PATH=/usr/bin:/bin" "LANG=C.UTF-8" "HOME=$inside/home" "XDG_CONFIG_HOME=$inside/home/config"
  "TMPDIR=$inside/tmp" "XDG_RUNTIME_DIR=$inside/runtime"
  "QT_QPA_PLATFORM=offscreen" "QT_QUICK_BACKEND=software" "KVTEDITOR_FILE_DIALOGS=own"
  "QT_PLUGIN_PATH=$inside/plugins" "QT_QPA_GENERIC_PLUGINS=windowprobe"
  "KVTEDITOR_PROBE_FILE=one-module.kvt"
)
for name in ASAN_OPTIONS LSAN_OPTIONS UBSAN_OPTIONS TSAN_OPTIONS; do
  [[ -z ${!name-} ]] || environment+=("$name=${!name}")
done

run() (
  cd "$work/elsewhere"
  timeout "$patience" env -i "${environment[@]}" "$program" ../samples/one-module.kvt
)
run_in_root() {
  chown -R nobody "$work"
  timeout "$patience" chroot --userspec=nobody:nogroup "$root" /usr/bin/env -i --chdir="$inside/elsewhere" \
    "${environment[@]}" "$program" ../samples/one-module.kvt
}

code=0
if [[ -n $root ]]; then
  cp "$work/service.json" "$root/etc/kvteditor/service.json"
  run_in_root >"$work/out" 2>"$work/errors" || code=$?
else
  environment+=("KVTEDITOR_SERVICE_CONFIG=$work/service.json")
  run >"$work/out" 2>"$work/errors" || code=$?
fi

bad=0
compare() {
  diff -u --label "$1, expected" --label "$1" - "$2" || bad=1
}
compare "exit code" <(echo "$code") <<<0
compare "standard error" "$work/errors" </dev/null
compare "standard output" "$work/out" <<'SAID'
file: open and identified
openDialog: opens
searchFolderDialog: opens
TLS: there
certificates: there
SAID
compare "log" "$work/tmp/kvteditornew-qt.log" <<'LOG'
main: start
main: constructing AppState
main: loading QML
main: event loop
LOG
if [[ -n $(ls -A "$work/elsewhere") ]]; then
  echo "check-start: it left files in the folder where it was started" >&2
  bad=1
fi
((bad == 0))
echo "check-start: $program starts, opens a file, and closes without a message"
