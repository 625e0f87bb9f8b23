#!/usr/bin/env bash
# fuzz.sh SECONDS: builds the fuzz targets and runs each for that long, starting from its corpus. New
# inputs go to build/fuzz/findings/<target>; the exit status is 0 only when no target found a fault.
set -euo pipefail
seconds=${1:?usage: ./fuzz.sh SECONDS}
cd "$(dirname "$(realpath "$0")")"
scripts/install_packages.sh clang libclang-rt-14-dev cmake ninja-build libcli11-dev \
  nlohmann-json3-dev libsqlite3-dev
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

status=0
for target in build/fuzz/bin/fuzz_*; do
  name=${target##*/fuzz_}
  mkdir -p "build/fuzz/findings/$name"
  echo "== $name"
  "$target" -max_total_time="$seconds" -print_final_stats=1 -max_len=8192 \
    -artifact_prefix="build/fuzz/findings/$name-" \
    "build/fuzz/findings/$name" "fuzz/corpus/$name" 2>&1 |
    grep -E 'stat::|DONE|ERROR|SUMMARY|broken' || true
  [ "${PIPESTATUS[0]}" -eq 0 ] || status=1
done
exit "$status"
