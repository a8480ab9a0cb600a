#!/usr/bin/env bash
# Fails when a document points at a file that is not there: a relative link or picture, or a path of this project
# in `backticks` or in a block of shell commands. A "*" or a "<word>" in a path stands for anything.
#   tests/docs/check-links.sh [TOP [DOCUMENT...]]
set -euo pipefail
shopt -s extglob nullglob

top=${1:-$(dirname "${BASH_SOURCE[0]}")/../..}
cd "$top"
shift || true

documents=("$@")
if ((${#documents[@]} == 0)); then
  documents=(README.md CONTRIBUTING.md SECURITY.md CHANGELOG.md docs/*.md docs/manual/*.md {tools,benchmarks,tests,tests/fuzz,tests/mutation,devservice}/README.md)
fi
# What a path of the project begins with; everything else in backticks is code, a type or a path of some machine.
project_path='^(src|tests|docs|scripts|tools|benchmarks|devservice|packaging|\.ci)/'
links='\]\(([^()[:space:]]+)[^()]*\)'
# A backtick has no other meaning in a pattern, but the shell would read it as one of its own.
tick='`'
code="$tick([^$tick]+)$tick"
checked=0
dead=0

there() { [[ -e $1 ]] || [[ $1 == *\** && -n $(compgen -G "$1") ]]; }

check() {
  local document=$1 line=$2 shown=$3 path=$4
  checked=$((checked + 1))
  if ! there "$path"; then
    printf '%s:%d: there is no %s\n' "$document" "$line" "$shown" >&2
    dead=$((dead + 1))
  fi
}

check_link() {
  local target=${3%%#*}
  if [[ -n $target && ! $target =~ ^[a-z][a-z0-9+.-]*: ]]; then
    check "$1" "$2" "$3" "$(dirname "$1")/$target"
  fi
}

check_words() {
  local words word
  read -ra words <<<"$3"
  for word in ${words[@]+"${words[@]}"}; do
    word=${word#./}
    word=${word%%[:,;]*}
    if [[ $word =~ $project_path ]]; then
      check "$1" "$2" "$word" "${word//<+([^>])>/*}"
    fi
  done
}

check_document() {
  local document=$1 number=0 block='' block_name lines text rest
  mapfile -t lines <"$document"
  for text in ${lines[@]+"${lines[@]}"}; do
    number=$((number + 1))
    if [[ $text == '```'* ]]; then
      block_name=${text#'```'}
      if [[ -n $block ]]; then block=''; else block=${block_name:-plain}; fi
      continue
    fi
    if [[ -n $block ]]; then
      [[ $block != sh ]] || check_words "$document" "$number" "$text"
      continue
    fi
    rest=$text
    while [[ $rest =~ $code ]]; do
      rest=${rest/"${BASH_REMATCH[0]}"/}
      check_words "$document" "$number" "${BASH_REMATCH[1]}"
    done
    while [[ $rest =~ $links ]]; do
      rest=${rest/"${BASH_REMATCH[0]}"/}
      check_link "$document" "$number" "${BASH_REMATCH[1]}"
    done
  done
  if [[ -n $block ]]; then
    printf '%s: a code block is left open\n' "$document" >&2
    dead=$((dead + 1))
  fi
}

for document in "${documents[@]}"; do
  if [[ -f $document ]]; then
    check_document "$document"
  else
    printf '%s: this document is missing\n' "$document" >&2
    dead=$((dead + 1))
  fi
done
if ((checked == 0)); then
  printf 'check-links: found nothing to check\n' >&2
  exit 1
fi
printf 'check-links: %d path(s) in %d document(s), %d dead\n' "$checked" "${#documents[@]}" "$dead"
((dead == 0))
