#!/usr/bin/env bash
# Fails unless the package depends on the Debian packages of just those QML modules that the window imports,
# itself or by way of others. On Debian 12 none of these packages depends on another; a later one brings some along.
#   check-qml-modules.sh SCANNER QML_FOLDER
# SCANNER is qmlimportscanner, QML_FOLDER the folder of the system's QML modules.
set -euo pipefail
export LC_ALL=C

scanner=$1
modules=$2
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

# The files of the dialogs that Qt draws itself are loaded by name, not by import.
imported() {
  local sources
  for sources in "$top/src/ui" "$modules/QtQuick/Dialogs/quickimpl/qml"; do
    "$scanner" -rootPath "$sources" -importPath "$modules" | sed -n 's/^ *"path": "\(.*\)",\{0,1\}$/\1\/qmldir/p'
  done | sort -u
}

# The module QML itself needs no package: the engine has its types built in.
needed() {
  local list lists=()
  for list in $(imported); do
    [[ ! -f $list || $list == "$modules/QML/qmldir" ]] || lists+=("$(realpath "$list")")
  done
  dpkg-query --search "${lists[@]}" | sed 's/[:,].*//' | sort -u
}

listed=$(sed -n 's/^\(qml6-[^ ]*\).*/\1/p' "$top/packaging/debian/depends" | sort)

# The packages of modules that those listed depend on.
brought_along() {
  local package
  for package in $listed; do
    dpkg-query --show --showformat '${Depends}\n' "$package"
  done | grep -o 'qml6-module-[a-z0-9-]*' | sort -u
}

diff -u --label "modules imported" --label "modules in debian/depends" \
  <(comm -23 <(needed) <(comm -23 <(brought_along) <(echo "$listed"))) <(echo "$listed")
