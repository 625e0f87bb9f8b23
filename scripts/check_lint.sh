#!/usr/bin/env bash
# check_lint.sh [--tools | FILE...]: runs clang-tidy with the checks of .clang-tidy on the sources of
# the products, on those of the tools, or on those given, as the native preset compiles them.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")/.."
[ -f build/native/compile_commands.json ] || cmake --preset native >/dev/null
if [ "${1-}" = --tools ]; then
  mapfile -t files < <(git ls-files 'tools/*.cpp')
elif [ $# -gt 0 ]; then
  files=("$@")
else
  mapfile -t files < <(git ls-files 'adapter/*.cpp' 'matcher/*.cpp' 'platform/*.cpp')
fi
compiled=()
for file in "${files[@]}"; do
  if grep -qF "$PWD/$file\"" build/native/compile_commands.json; then
    compiled+=("$file")
  fi
done
printf '%s\0' "${compiled[@]}" |
  xargs -0 -P "$(nproc)" -n 4 clang-tidy -p build/native --quiet
