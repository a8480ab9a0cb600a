#!/usr/bin/env bash
# Installs what is missing, builds, and checks everything: style, scripts, then the tests (QML lint among them) in an
# ordinary build with GCC, and again in one with Clang's address and undefined-behaviour sanitizers, there without those
# of QML alone (ctest --preset presentation). Only CI adds the exhaustive tests (ctest --preset exhaustive).
#   scripts/test.sh --quick    only style, unit and view tests without the slow ones, in the debug build
#   scripts/test.sh --release  leaves the sanitizers out
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
case ${1-} in
'') presets=(release asan) ;;
--quick) presets=(quick) ;;
--release) presets=(release) ;;
*)
  sed -n '2,6s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
  exit 2
  ;;
esac
"$top/scripts/setup.sh"
cd "$top"

step() { printf '\n== %s\n' "$*"; }

step "style of the C++ sources"
find src devservice tests benchmarks \( -name '*.cpp' -o -name '*.h' \) -print0 \
  | xargs -0 -n 16 -P "$(nproc)" clang-format --dry-run --Werror

step "shell scripts"
find scripts src devservice packaging tests benchmarks -name '*.sh' -print0 | xargs -0 shellcheck -x .ci/run

for preset in "${presets[@]}"; do
  step "build: $preset"
  cmake --preset "${preset/quick/debug}" >/dev/null
  cmake --build --preset "$preset"
  step "tests: $preset"
  ctest --preset "$preset"
  printf '\n%s: %d s so far\n' "$preset" "$SECONDS"
done
