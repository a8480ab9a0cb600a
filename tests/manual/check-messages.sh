#!/usr/bin/env bash
# Fails when a text that the program can put on the status line is not in the manual's chapter about messages.
#   tests/manual/check-messages.sh
set -euo pipefail

top=$(dirname "${BASH_SOURCE[0]}")/../..
chapter=$top/docs/manual/messages.md

# The texts in calls of setStatus or of signals that lead there, and those that lower floors hand up as an error or an outcome. What is refused
# in a service configuration goes to the log only.
mapfile -t sources < <(find "$top/src" -name '*.cpp' ! -name ServiceConfig.cpp | sort)
mapfile -t texts < <(perl -0777 -ne '
  while (/(?:setStatus\(|\bsaid\(|\b(?:fail|report)\(error,|\berror = |return \{\s*(?=u"))(.*?);/gs) {
    my $statement = $1;
    print "$1\n" while $statement =~ /\bu"((?:[^"\\]|\\.)*)"_s/g;
  }' "${sources[@]}" | sed -e 's/\\u2014/—/g; s/\\u2013/–/g' | sort -u)

missing=0
checked=0
for text in "${texts[@]}"; do
  # Keys of maps and lone words are not messages.
  [[ $text == *' '* ]] || continue
  checked=$((checked + 1))
  pattern=$(printf '%s' "$text" | sed -e 's/[][\.*^$+?(){}|]/\\&/g; s/%[0-9]/.+/g')
  if ! grep -qiE -- "$pattern" "$chapter"; then
    printf '%s: nothing about "%s"\n' "$chapter" "$text" >&2
    missing=$((missing + 1))
  fi
done
if ((checked < 20)); then
  printf 'check-messages: found only %d message(s) in the sources\n' "$checked" >&2
  exit 1
fi
printf 'check-messages: %d message(s), %d not in the manual\n' "$checked" "$missing"
((missing == 0))
