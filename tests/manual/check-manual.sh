#!/usr/bin/env bash
# Fails unless the user manual is there, whole, and has every chapter, section and inner link of its source.
#   tests/manual/check-manual.sh MANUAL.pdf
set -euo pipefail

manual=$1
source=$(dirname "${BASH_SOURCE[0]}")/../../docs/manual
least_pages=15
failures=0

fail() {
  printf '%s: %s\n' "$manual" "$*" >&2
  failures=$((failures + 1))
}

if [[ ! -s $manual ]]; then
  fail 'is missing or empty'
  exit 1
fi

pages=$(pdfinfo "$manual" | sed -n 's/^Pages: *//p')
((pages >= least_pages)) || fail "has $pages page(s), expected at least $least_pages"

# Titles may break over lines, and a font may join two letters in one sign.
text=$(pdftotext "$manual" - | sed -e 's/ﬁ/fi/g; s/ﬂ/fl/g; s/ﬀ/ff/g; s/ﬃ/ffi/g; s/ﬄ/ffl/g' | tr -s '[:space:]' ' ')

headings=0
mapfile -t chapters <"$source/chapters.txt"
for chapter in "${chapters[@]}"; do
  while IFS= read -r heading; do
    headings=$((headings + 1))
    # Once in the contents, and once where it stands.
    rest=${text#*"$heading"}
    [[ $text == *"$heading"* && $rest == *"$heading"* ]] || fail "lacks the heading \"$heading\" of $chapter"
  done < <(sed -n 's/^##\{0,1\} //p' "$source/$chapter")
done
((headings > ${#chapters[@]})) || fail "no headings found in $source"

for chapter in "$source"/*.md; do
  grep -qxF "${chapter##*/}" "$source/chapters.txt" || fail "${chapter##*/} is not in chapters.txt"
done

# Two jumps from the contents to each heading, by its title and by its page number, and no jump left undone.
jumps=$(grep -a -c '^/S /GoTo' "$manual" || true)
((jumps >= 2 * headings)) || fail "has $jumps inner link(s) for $headings heading(s)"
undone=$(grep -a -c '/URI (#' "$manual" || true)
((undone == 0)) || fail "has $undone link(s) that lead nowhere"

printf 'check-manual: %d page(s), %d heading(s), %d inner link(s)\n' "$pages" "$headings" "$jumps"
((failures == 0))
