#!/usr/bin/env bash
# demo.sh [--data DIR] [--impostors N]: builds what is needed and runs the main job on sample records:
# fingers are enrolled, verified and identified through the adapter's interface table. DIR holds
# records named FINGER_IMPRESSION.fmr; without it the shipped samples are used.
set -euo pipefail
# DIR is seen from the caller's folder.
arguments=()
while [ $# -gt 0 ]; do
  case $1 in
    --data=?*) arguments+=("--data=$(realpath -m -- "${1#--data=}")") ;;
    --data)
      arguments+=("$1")
      if [ -n "${2-}" ]; then
        arguments+=("$(realpath -m -- "$2")")
        shift
      fi
      ;;
    *) arguments+=("$1") ;;
  esac
  shift
done
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
