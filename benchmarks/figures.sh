# shellcheck shell=bash
# What compare.sh and compare-window.sh share: figures of several runs, and the lines of the table. Sourced by both.

# shellcheck disable=SC2034
repeats=5

# Of figures, one on each line: the median, the least and the largest.
spread() { sort -g | awk '{ value[NR] = $1 } END { print value[int((NR + 1) / 2)], value[1], value[NR] }'; }

# One line of the table: work, ours, unit, theirs, against, the most that the ratio may be ("-": for comparison only, no
# limit). Ours and theirs are each a figure or a spread.
line() {
  local ratio
  ratio=$(awk -v o="${2%% *}" -v t="${4%% *}" 'BEGIN { printf "%.2f", o / t }')
  printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$1" "$2" "$3" "$4" "$5" "$ratio" "$([[ $6 == - ]] || printf '<= ')$6"
}
