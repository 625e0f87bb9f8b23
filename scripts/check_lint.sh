#!/usr/bin/env bash
# check_lint.sh [FILE...]: runs clang-tidy with the checks of .clang-tidy on the given sources, or on
# all sources that ship, with the flags of the asan preset (Clang's own).
set -euo pipefail
cd "$(dirname "$(realpath "$0")")/.."
[ -f build/asan/compile_commands.json ] || cmake --preset asan >/dev/null
if [ $# -gt 0 ]; then
  files=("$@")
else
  mapfile -t files < <(git ls-files 'adapter/*.cpp' 'matcher/*.cpp' 'platform/*.cpp')
fi
compiled=()
for file in "${files[@]}"; do
  if grep -qF "$PWD/$file\"" build/asan/compile_commands.json; then
    compiled+=("$file")
  fi
done
printf '%s\0' "${compiled[@]}" |
  xargs -0 -P "$(nproc)" -n 4 clang-tidy -p build/asan --quiet
