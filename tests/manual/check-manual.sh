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

# A jump from the contents to each heading, and each heading in the outline.
marked=$(pdftohtml -xml -i -stdout "$manual")
jumps=$(grep -cE '<a href="[^":]*#[0-9]+">(<b>)?[[:alnum:]]' <<<"$marked" || true)
((jumps >= headings)) || fail "has $jumps inner link(s) for $headings heading(s)"
entries=$(grep -c '^<item ' <<<"$marked" || true)
((entries >= headings)) || fail "has $entries outline entries for $headings heading(s)"

printf 'check-manual: %d page(s), %d heading(s), %d inner link(s)\n' "$pages" "$headings" "$jumps"
((failures == 0))
