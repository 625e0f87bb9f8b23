#!/usr/bin/env bash
# count_instructions.sh [PAIRS]: instructions of a whole match, both loads included, counted inside
# ORLFingerMatcher_Match over PAIRS (200) impostor pairs of the records that ORL_RECORDS names, the
# building of the lookup tables left out. Also tells the mispredicted branches of a simple model.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")/.."
pairs=${1:-200}
program=build/bench/bin/orl-counted-matches
[ -x "$program" ] || { cmake --preset bench && cmake --build --preset bench; } >&2

# counted N: instructions and mispredictions of N pairs.
counted() {
  valgrind --tool=callgrind --branch-sim=yes --callgrind-out-file=/dev/null \
    --toggle-collect=ORLFingerMatcher_Match "$program" "$1" 2>&1 |
    awk '/Collected/ { gsub(",", ""); instructions = $4 }
         /Mispredicts:/ { gsub(",", ""); mispredicted = $3 }
         END { print instructions, mispredicted }'
}

# The first match builds the tables, so one pair's figures are taken off.
read -r first_instructions first_mispredicted < <(counted 1)
read -r instructions mispredicted < <(counted "$pairs")
echo "instructions a match: $(((instructions - first_instructions) / (pairs - 1)))"
echo "mispredicted branches a match: $(((mispredicted - first_mispredicted) / (pairs - 1)))"
