#!/usr/bin/env bash
# count_instructions.sh [PAIRS]: instructions of a whole match, both loads included, counted inside
# ORLFingerMatcher_Match over PAIRS (200, 2 at least) impostor pairs of the records that ORL_RECORDS
# names, or of the samples; the building of the lookup tables is left out. Also tells the mispredicted
# branches of a simple model. The exit status is not 0 when nothing could be counted.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")/.."
pairs=${1-200}
if [ $# -gt 1 ] || [[ ! $pairs =~ ^[1-9][0-9]{0,8}$ ]] || [ "$pairs" -lt 2 ]; then
  echo "usage: scripts/count_instructions.sh [PAIRS], a whole number of 2 at least" >&2
  exit 2
fi
{ cmake --preset bench && cmake --build --preset bench --target orl-counted-matches; } >&2
program=build/bench/bin/orl-counted-matches

# counted N: how many pairs were matched (a folder may have fewer), instructions, mispredictions.
counted() {
  valgrind --tool=callgrind --branch-sim=yes --callgrind-out-file=/dev/null \
    --toggle-collect=ORLFingerMatcher_Match "$program" "$1" 2>&1 |
    awk '{ said = said $0 "\n" }
         /^[0-9]+$/ { pairs = $1 }
         /Collected/ { gsub(",", ""); instructions = $4 }
         /Mispredicts:/ { gsub(",", ""); mispredicted = $3 }
         END {
           if (pairs == "" || instructions == "" || mispredicted == "") {
             printf "%s", said > "/dev/stderr"
             exit 1
           }
           print pairs, instructions, mispredicted
         }'
}

# The first match builds the tables, so one pair's figures are taken off.
first=$(counted 1)
all=$(counted "$pairs")
read -r _ first_instructions first_mispredicted <<<"$first"
read -r pairs instructions mispredicted <<<"$all"
echo "instructions a match: $(((instructions - first_instructions) / (pairs - 1)))"
echo "mispredicted branches a match: $(((mispredicted - first_mispredicted) / (pairs - 1)))"
