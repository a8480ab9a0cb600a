#!/usr/bin/env bash
# Prints every include of a floor above its source's own, or beside it, and then fails. main.cpp stands above them all.
# Qt's headers go without their module: with it the compiler finds those of modules that the floor does not link.
#   check-floors.sh FOLDER-OF-SOURCES
set -euo pipefail
export LC_ALL=C
cd "$1"

declare -A may_use=([core]=core [api]='api|core' [platform]='platform|core' [app]='app|api|platform|core'
  [ui]='ui|app|api|core')
status=0
for floor in */; do
  floor=${floor%/}
  includes=$(grep -rEn --include='*.h' --include='*.cpp' --exclude=main.cpp '^\s*#\s*include' "$floor")
  if grep -Ev "include (\"(${may_use[$floor]})/\w+\.h\"|<Q\w+>|<(QtConcurrent/QtConcurrentRun|QtGui/QDesktopServices|QtQml/qqml\.h)>|<((sys|xcb)/)?\w+(\.h)?>)\$" <<<"$includes"; then
    status=1
  fi
done
exit $status
