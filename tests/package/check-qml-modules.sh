#!/usr/bin/env bash
# Fails unless the package depends on the Debian packages of just those QML modules that the window imports,
# itself or by way of others. None of these packages depends on another.
#   check-qml-modules.sh SCANNER QML_FOLDER
# SCANNER is qmlimportscanner, QML_FOLDER the folder of the system's QML modules.
set -euo pipefail

scanner=$1
modules=$2
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

# The files of the dialogs that the toolkit draws itself are loaded by name, not by import.
imported() {
  local sources
  for sources in "$top/src/ui" "$modules/QtQuick/Dialogs/quickimpl/qml"; do
    "$scanner" -rootPath "$sources" -importPath "$modules" | sed -n 's/^ *"path": "\(.*\)",\{0,1\}$/\1\/qmldir/p'
  done | sort -u
}

needed() {
  local list lists=()
  for list in $(imported); do
    [[ ! -f $list ]] || lists+=("$(realpath "$list")")
  done
  dpkg-query --search "${lists[@]}" | sed 's/[:,].*//' | LC_ALL=C sort -u
}

diff -u --label "modules imported" --label "modules in debian/depends" <(needed) \
  <(sed -n 's/^\(qml6-[^ ]*\).*/\1/p' "$top/packaging/debian/depends" | LC_ALL=C sort)
