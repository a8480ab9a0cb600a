#!/usr/bin/env bash
# Counts which lines and branches of src the unit and view tests reach, and the one that needs a display, and prints
# them for each file and in all.
# Ends with 1 when a test fails, or when fewer than 97 % of the lines or 90 % of the branches are reached.
#   scripts/coverage.sh [BUILD-FOLDER]   (build/coverage by default)
# BUILD-FOLDER/coverage/index.html then shows each line.
set -euo pipefail
export LC_ALL=C.UTF-8

least_lines=97
least_branches=90

case ${1-} in
-h | --help)
  sed -n '2,6s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
  exit 0
  ;;
-*)
  echo "usage: scripts/coverage.sh [BUILD-FOLDER]" >&2
  exit 2
  ;;
esac

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(realpath -m "${1:-$top/build/coverage}")
"$top/scripts/setup.sh" gcovr
cd "$top"

step() { printf '\n== %s\n' "$*"; }

step "build: $build"
cmake --preset coverage -B "$build" >/dev/null
# The programs of the unit tests have the names of the tests.
names_of() { ctest --test-dir "$build" --show-only "$@" | sed -n 's/^ *Test *#[0-9]*: //p'; }
mapfile -t programs < <(names_of --label-regex '^unit$' && names_of --tests-regex '^tst_drawing$')
cmake --build "$build" --parallel 2 --target "${programs[@]}" tst_views

step "tests: unit and qml, and the one of src/platform/Graphics.cpp"
# What earlier runs counted does not count.
find "$build" -name '*.gcda' -delete
QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software \
  ctest --test-dir "$build" --label-regex '^(unit|qml)$' --output-on-failure --no-tests=error --parallel 2 \
  && ctest --test-dir "$build" --tests-regex '^tst_drawing$' --output-on-failure && passed=yes || passed=no

step "coverage"
report=$build/coverage
mkdir -p "$report"
# gcovr leaves out the branch from a call to the unwinding of an exception, but not the branches within: they belong
# to the blocks that gcov marks with dollar signs.
cat >"$report/gcov" <<'END'
#!/usr/bin/env bash
set -euo pipefail
gcov --all-blocks "$@"
shopt -s nullglob
for file in *.gcov; do
  awk '!/^(branch|call|unconditional)/ { unwinding = /^ *\$+:/ } !unwinding' "$file" >"$file.kept"
  mv "$file.kept" "$file"
done
END
chmod +x "$report/gcov"
mapfile -t objects < <(find "$build" -type d \( -name 'kvteditor_floor_*.dir' -o -name kvteditor_uisupport.dir \
  -o -path '*.dir/*' -not -path '*/kvteditor_portable_files.dir/*' -name src \))
gcovr --root "$top" --filter "$top/src/.*\.cpp\$" --exclude "$top/src/app/main\.cpp" \
  --exclude-throw-branches --exclude-unreachable-branches --gcov-executable "'$report/gcov'" \
  --csv "$report/files.csv" --html-details "$report/index.html" "${objects[@]}"

awk -F , -v least_lines="$least_lines" -v least_branches="$least_branches" '
  function percent(reached, all) { return all ? 100 * reached / all : 100 }
  function row(name, lines, allLines, branches, allBranches) {
    printf "%-36s %5d of %5d %6.1f %%   %5d of %5d %6.1f %%\n", name,
      lines, allLines, percent(lines, allLines), branches, allBranches, percent(branches, allBranches)
  }
  BEGIN { printf "%-36s %23s   %23s\n", "file", "lines", "branches" }
  FNR > 1 {
    row($1, $3, $2, $6, $5)
    lines += $3; allLines += $2; branches += $6; allBranches += $5
  }
  END {
    row("all", lines, allLines, branches, allBranches)
    exit !allLines || percent(lines, allLines) < least_lines || percent(branches, allBranches) < least_branches
  }' "$report/files.csv" && enough=yes || enough=no

cat <<END

Not counted:
  src/app/main.cpp      runs only as the program itself: the tests labelled e2e start it
  generated sources     of moc, of the resources and of the QML compiler
  branches of exceptions that the compiler adds to each call, and branches on lines without code of ours
END
if [[ $passed == no ]]; then
  printf '\ncoverage: a test failed; see above\n' >&2
  exit 1
fi
if [[ $enough == no ]]; then
  printf '\ncoverage: under %s %% of the lines or %s %% of the branches\n' "$least_lines" "$least_branches" >&2
  exit 1
fi
