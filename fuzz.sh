#!/usr/bin/env bash
# fuzz.sh SECONDS [TARGET...]: builds the fuzz targets and runs each, or those named, for that long,
# from its corpus and from what earlier runs found. New inputs go to build/fuzz/findings/<target>,
# an input that showed a fault to build/fuzz/findings/<target>-<kind>-<sum>. Prints a line a target:
# how many inputs were tried, how many edges of the code they reached, and the faults found. The
# exit status is 0 only when there was none.
set -euo pipefail

# refuse TEXT: tells what is wrong with the arguments, and ends.
refuse() {
  echo "$1" >&2
  exit 2
}

[ $# -gt 0 ] || refuse "usage: ./fuzz.sh SECONDS [TARGET...]"
seconds=$1
shift
[[ $seconds =~ ^[1-9][0-9]{0,8}$ ]] ||
  refuse "fuzz.sh: SECONDS is a positive whole number of at most 9 digits, not '$seconds'"
cd "$(dirname "$(realpath "$0")")"
for name in "$@"; do
  [[ $name =~ ^[a-z_]+$ && -f fuzz/fuzz_$name.cpp ]] ||
    refuse "fuzz.sh: no target '$name' (there are: $(cd fuzz &&
      printf '%s\n' fuzz_*.cpp | sed 's/^fuzz_//; s/\.cpp$//' | paste -sd' '))"
done
scripts/install_packages.sh clang libclang-rt-14-dev cmake ninja-build libcli11-dev \
  nlohmann-json3-dev libsqlite3-dev
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzz_targets

if [ $# -gt 0 ]; then
  targets=("${@/#/build/fuzz/bin/fuzz_}")
else
  targets=(build/fuzz/bin/fuzz_*)
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
for target in "${targets[@]}"; do
  name=${target##*/fuzz_}
  mkdir -p "build/fuzz/findings/$name"
  faults=none
  if ! "$target" -max_total_time="$seconds" -print_final_stats=1 -max_len=4096 -len_control=20 \
    -timeout=25 -artifact_prefix="build/fuzz/findings/$name-" \
    "build/fuzz/findings/$name" "fuzz/corpus/$name" >"$log" 2>&1; then
    status=1
    faults=$(sed -n -E 's/^(broken: .*)/\1/p; s/^SUMMARY: //p' "$log" | paste -sd';')
    grep -E 'Test unit written' "$log" || tail -5 "$log"
  fi
  # A target that ends at once has told neither.
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  edges=$(sed -n -E 's/.*cov: ([0-9]+).*/\1/p' "$log" | tail -1)
  printf '%-16s %10s inputs  %6s edges  faults: %s\n' "$name" "${executions:-?}" "${edges:-?}" \
    "${faults:-the target ended}"
done
exit "$status"
