#!/usr/bin/env bash
# demo.sh [--data DIR] [--impostors N]: builds what is needed and runs the main job on sample records:
# fingers are enrolled, verified and identified through the adapter's interface table. DIR holds
# records named FINGER_IMPRESSION.fmr; without it the shipped samples are used.
set -euo pipefail
# Only the build goes to the project's folder: DIR is seen from the caller's.
root=$(dirname "$(realpath "$0")")

"$root/scripts/install_packages.sh" g++ cmake ninja-build libcli11-dev nlohmann-json3-dev \
  libsqlite3-dev

build_log=$(mktemp)
trap 'rm -f "$build_log"' EXIT
echo "Building ..."
if ! (cd "$root" && cmake --preset native -DORL_BUILD_TESTS=OFF -B build/demo &&
      cmake --build build/demo --target orl-unit orl-finger orl_engine_adapter) >"$build_log" 2>&1; then
  cat "$build_log" >&2
  exit 1
fi
"$root/build/demo/bin/orl-unit" demo "$@"
