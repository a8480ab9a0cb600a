#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test and check: style, scripts, then the tests (QML lint among them)
# in an ordinary build with GCC, and again in one with Clang's address and undefined-behaviour sanitizers.
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$top/scripts/setup.sh"
cd "$top"

step() { printf '\n== %s\n' "$*"; }

step "style of the C++ sources"
find src devservice docs tests benchmarks \( -name '*.cpp' -o -name '*.h' \) -print0 \
  | xargs -0 clang-format --dry-run --Werror

step "shell scripts"
find scripts src devservice docs packaging tests benchmarks -name '*.sh' -print0 | xargs -0 shellcheck .ci/run

for preset in release asan; do
  step "build: $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  step "tests: $preset"
  ctest --preset "$preset"
done

step "tests: release, everything before every fault"
ctest --preset exhaustive
