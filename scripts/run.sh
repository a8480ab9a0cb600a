#!/usr/bin/env bash
# Installs what is missing, builds the editor, and starts it on sample data with a local service behind it.
#   scripts/run.sh [FILE]      opens FILE instead of the sample tune file
#   scripts/run.sh --tour DIR  walks through the window by itself and leaves a picture of each step in DIR
set -euo pipefail

caller=$PWD
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$top/build/release
file=
tour=

case ${1-} in
--tour)
  tour=${2:?run: --tour needs a folder for the pictures}
  ;;
-h | --help)
  sed -n '2,4s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
  exit 0
  ;;
*)
  file=${1-}
  ;;
esac
absolute() { case $1 in /*) printf '%s' "$1" ;; *) printf '%s/%s' "$caller" "$1" ;; esac; }
[[ -z $tour ]] || tour=$(absolute "$tour")
[[ -z $file ]] || file=$(absolute "$file")

"$top/scripts/setup.sh" run
cd "$top"
if [[ -z $tour && -z ${DISPLAY-} && -z ${WAYLAND_DISPLAY-} ]]; then
  echo "run: there is no display here, so the tour shows the window instead${file:+; $file is not opened}" >&2
  tour=$build/tour
fi
cmake --preset release -D KVTEDITOR_BUILD_BENCHMARKS=OFF >/dev/null
if [[ -n $tour ]]; then
  cmake --build --preset release --target kvteditor_tour
  mkdir -p "$tour"
  if [[ -z ${DISPLAY-} && -z ${WAYLAND_DISPLAY-} ]]; then
    export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software
  fi
  KVTEDITOR_TOUR_DIR=$tour "$build/kvteditor_tour"
  printf 'run: the pictures of the tour are in %s\n' "$tour"
  exit 0
fi

cmake --build --preset release --target kvteditor kvteditor_manual_pdf kvteditor_devservice_program
work=$(mktemp -d)
service=
trap '[[ -z $service ]] || kill "$service" 2>/dev/null || true; rm -rf "$work"' EXIT
samples=$build/sample-data
# Made once: a sample that was edited and saved is the user's.
make_samples=()
[[ -d $samples ]] || make_samples=(--sample-data "$samples")
"$build/devservice/kvteditor-devservice" "${make_samples[@]}" --config-file "$work/service.json" &
service=$!
until [[ -s $work/service.json ]]; do
  kill -0 "$service" 2>/dev/null || { echo "run: the local service did not start" >&2; exit 1; }
  sleep 0.1
done
[[ -n $file ]] || file=$samples/one-module.kvt
printf 'run: sample data is in %s\n' "$samples"
KVTEDITOR_SERVICE_CONFIG=$work/service.json "$build/kvteditor" "$file"
