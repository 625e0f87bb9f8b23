#!/usr/bin/env bash
# test.sh: installs what is missing, builds and passes every test: Linux, Windows under Wine, what
# differs with the file log sink, the sanitizer builds, and the checks of format and lint.
# ORL_RECORDS may name a folder of real *.fmr records; tests that read them skip without it.
# The last line is "N passed, N failed"; the exit status is 0 only when nothing failed.
set -uo pipefail
cd "$(dirname "$(realpath "$0")")" || exit 1

scripts/install_packages.sh g++ clang libclang-rt-14-dev clang-format clang-tidy cmake ninja-build \
  g++-mingw-w64-x86-64-posix wine wine64 googletest libbenchmark-dev libcli11-dev \
  nlohmann-json3-dev libsqlite3-dev || exit 1

passed=0
failed=0

# count NAME PASSED FAILED: adds one stage's outcome to the totals and tells it.
count() {
  passed=$((passed + $2))
  failed=$((failed + $3))
  printf '== %s: %d passed, %d failed (%d s)\n' "$1" "$2" "$3" "$SECONDS"
}

# stage NAME COMMAND...: a check that counts as one test; its output is shown when it fails.
stage() {
  local name=$1 log
  shift
  log=$(mktemp)
  if "$@" >"$log" 2>&1; then
    count "$name" 1 0
  else
    cat "$log"
    count "$name" 0 1
  fi
  rm -f "$log"
}

# configure_and_build PRESET [--target TARGET...]: the native presets prove that every file stands on
# its own; all others take the tools and their tests in one piece each, which saves time.
configure_and_build() {
  local unity=ON
  [[ $1 == native* ]] && unity=OFF
  cmake --preset "$1" -DORL_UNITY_BUILD=$unity && cmake --build --preset "$1" "${@:2}"
}

# build_and_test PRESET [TEST...]: builds a preset and runs its tests, or only those named.
build_and_test() {
  local preset=$1 status=0 totals only=()
  shift
  if [ $# -gt 0 ]; then
    only=(-R "^($(IFS='|' && echo "$*"))\$")
    stage "$preset build" configure_and_build "$preset" --target "$@"
  else
    stage "$preset build" configure_and_build "$preset"
  fi
  rm -rf "build/$preset/test-results"
  mkdir -p "build/$preset/test-results"
  ctest --preset "$preset" --parallel "$(nproc)" --output-junit "test-results/ctest.junit" \
    "${only[@]}" || status=$?
  totals=$(cmake -DRESULTS="build/$preset/test-results" -DSTATUS="$status" \
    -P cmake/sum_test_results.cmake 2>&1)
  # shellcheck disable=SC2086  # two numbers
  count "$preset tests" $totals
}

# The benchmarks share the native preset's rooms, so they are built there, not by their own preset.
stage "configuration" cmake --preset native -DORL_BUILD_BENCH=ON
for preset in native windows asan; do
  build_and_test "$preset"
done
# What runs on several threads.
build_and_test tsan orl_table_first_use_tests orl_first_match_tests orl_features_tests \
  orl_matcher_api_tests orl_adapter_matching_tests orl_engine_log_tests orl_module_tests
# These differ from the first two in the adapter module alone.
for preset in native-log windows-log; do
  build_and_test "$preset" orl_module_tests orl_engine_log_tests
done
stage "fuzz targets build" configure_and_build fuzz --target fuzz_targets
stage "format" scripts/check_format.sh
stage "lint" scripts/check_lint.sh

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
