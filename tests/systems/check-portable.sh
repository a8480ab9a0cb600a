#!/usr/bin/env bash
# Compiles every source of src for Windows, by Debian's MinGW cross compiler and against the headers of the Qt that is
# installed here. That shows that they use nothing that only Unix has. Nothing is linked, let alone run.
#
#   scripts/setup.sh g++-mingw-w64-x86-64-posix
#   tests/systems/check-portable.sh
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/../.."
compiler=x86_64-w64-mingw32-g++-posix
if ! command -v "$compiler" >/dev/null; then
  printf '%s: no %s: scripts/setup.sh g++-mingw-w64-x86-64-posix installs it\n' "$0" "$compiler" >&2
  exit 2
fi

headers=$(qmake6 -query QT_INSTALL_HEADERS)
own_headers=$(mktemp -d)
trap 'rm -rf "$own_headers"' EXIT
ln -s /usr/include/{zlib,zconf}.h "$own_headers"
# Debian 13 and sid leave out the one header that names the handles of windows.
if [[ ! -e $headers/QtGui/qwindowdefs_win.h ]]; then
  mkdir "$own_headers/QtGui"
  echo '#include <windef.h>' >"$own_headers/QtGui/qwindowdefs_win.h"
fi
flags=(-std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  -Isrc -isystem "$headers" -isystem "$own_headers"
  -DKVTEDITOR_PORTABLE_FILES -DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII -DQT_NO_URL_CAST_FROM_STRING
  -DQT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  '-DKVTEDITOR_API_BASE=""' '-DKVTEDITOR_STORE_URL=""' '-DKVTEDITOR_PLACEHOLDER_EMAIL=""')
for module in Core Gui Widgets Network Qml QmlIntegration Quick QuickControls2; do
  flags+=(-isystem "$headers/Qt$module")
done

mapfile -t sources < <(find src -name '*.cpp' | sort)
printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P "$(nproc)" "$compiler" "${flags[@]}"
printf 'All %s sources of src compile with %s against the headers of Qt %s; nothing was linked or run.\n' \
  "${#sources[@]}" "$("$compiler" --version | head -n 1)" "$(qmake6 -query QT_VERSION)"
