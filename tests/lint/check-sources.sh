#!/usr/bin/env bash
# Prints what clang-tidy, by the checks in .clang-tidy, and clazy find in src, and then fails. The lower floors are
# checked as one translation unit and the upper ones as another: most of the time goes into Qt's headers, so this takes
# a tenth. Two sources of one unit must not define the same file-local name.
set -euo pipefail
export LC_ALL=C.UTF-8
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

headers=$(qmake6 -query QT_INSTALL_HEADERS)
flags=(-std=c++20 "-I$PWD/src" -isystem "$headers" -DKVTEDITOR_XCB
  '-DKVTEDITOR_API_BASE="-"' '-DKVTEDITOR_STORE_URL="-"' '-DKVTEDITOR_PLACEHOLDER_EMAIL="-"')
for module in Core Gui Widgets Network Qml QmlIntegration Quick QuickControls2; do
  flags+=(-isystem "$headers/Qt$module")
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/check" <<'END'
clang-tidy --quiet --config-file=.clang-tidy "$@" || echo "clang-tidy failed"
clazy-standalone --checks=level0,level1,no-qstring-ref "$@" || echo "clazy failed"
END
find "$PWD"/src/{core,api,platform} -name '*.cpp' | sort | sed 's/.*/#include "&"/' >"$work/lower.cpp"
find "$PWD"/src/{app,ui} -name '*.cpp' | sort | sed 's/.*/#include "&"/' >"$work/upper.cpp"
printf '%s\0' "$work"/*.cpp \
  | xargs -0 -P 2 -I {} bash "$work/check" {} -- "${flags[@]}" >"$work/found" 2>&1
# Both exit with 0 whatever they find, and count the warnings that they suppress.
! grep -Ev '^[0-9]+ warnings? generated\.$' "$work/found"
