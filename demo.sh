#!/usr/bin/env bash
# demo.sh [--data DIR]: builds what is needed and runs the main job on sample records: fingers are
# enrolled, verified and identified through the adapter's interface table. DIR holds records named
# FINGER_IMPRESSION.fmr; without it the shipped samples are used.
set -euo pipefail
arguments=("$@")
if [ "${1-}" = --data ] && [ -n "${2-}" ]; then
  arguments=(--data "$(realpath -m -- "$2")" "${@:3}")
fi
cd "$(dirname "$(realpath "$0")")"

scripts/install_packages.sh g++ cmake ninja-build libcli11-dev nlohmann-json3-dev libsqlite3-dev

build_log=$(mktemp)
trap 'rm -f "$build_log"' EXIT
echo "Building ..."
if ! { cmake --preset native -DORL_BUILD_TESTS=OFF -B build/demo &&
       cmake --build build/demo --target orl-unit orl-finger orl_engine_adapter; } >"$build_log" 2>&1; then
  cat "$build_log" >&2
  exit 1
fi
build/demo/bin/orl-unit demo "${arguments[@]}"
