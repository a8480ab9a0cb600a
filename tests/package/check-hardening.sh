#!/usr/bin/env bash
# Fails unless a program was built with what makes it harder to attack, and does not name the folder of its sources.
#   check-hardening.sh PROGRAM SOURCES
# Of stack-clash protection a program of small frames shows nothing.
set -euo pipefail

program=$1
sources=$2
failures=0
want() {
  local what=$1 pattern=$2
  if ! grep -qE -e "$pattern" <<<"$3"; then
    printf '%s: no %s\n' "$program" "$what" >&2
    failures=$((failures + 1))
  fi
}

headers=$(readelf --wide --file-header --segments "$program")
dynamic=$(readelf --wide --dynamic "$program")
symbols=$(readelf --wide --dyn-syms "$program")
want 'position-independent code' 'Type: +DYN' "$headers"
want 'mark of a position-independent executable' 'FLAGS_1.* PIE' "$dynamic"
want 'read-only relocations' 'GNU_RELRO' "$headers"
want 'binding at the start' 'FLAGS.*(BIND_)?NOW' "$dynamic"
want 'stack without code' 'GNU_STACK.* RW ' "$headers"
want 'stack protector' '__stack_chk_fail' "$symbols"
want 'fortified function' ' __[a-z]+_chk@' "$symbols"
want 'assertions of the standard library' '__glibcxx_assert_fail' "$symbols"
if [[ $headers == *X86-64* ]]; then
  want 'marked targets of indirect jumps' '^[1-9][0-9]{2,}$' \
    "$(objdump --disassemble --section=.text --no-show-raw-insn "$program" | grep -c endbr64)"
fi
if grep --quiet --text --fixed-strings -e "$sources/src" "$program"; then
  printf '%s: names the folder of its sources\n' "$program" >&2
  failures=$((failures + 1))
fi
((failures == 0))
