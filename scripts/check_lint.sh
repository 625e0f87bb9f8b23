#!/usr/bin/env bash
# check_lint.sh [--tools | FILE...]: runs clang-tidy with the checks of .clang-tidy on the sources of
# the products, on those of the tools, or on those given, as the native preset compiles them. What it
# does not compile is left out; a FILE of that kind (a header, which is looked at with the sources
# that include it, a part of a united source, a wrong name) is named, and the exit status is 2.
set -euo pipefail

refuse() {
  printf '%s\n' "$@" >&2
  exit 2
}

root=$(dirname "$(dirname "$(realpath "$0")")")
commands=$root/build/native/compile_commands.json

# is_compiled PATH: whether the preset compiles the file of that absolute path by itself.
is_compiled() {
  grep -qF "\"file\": \"$1\"" "$commands"
}

given=()
rooms=(adapter matcher platform)
case "${1-}" in
  --tools)
    [ $# -eq 1 ] || refuse "usage: scripts/check_lint.sh [--tools | FILE...]"
    rooms=(tools)
    ;;
  -*) refuse "usage: scripts/check_lint.sh [--tools | FILE...]" ;;
  *) given=("$@") ;;
esac
[ -f "$commands" ] || (cd "$root" && cmake --preset native >/dev/null)

sources=()
unknown=()
for file in "${given[@]}"; do
  path=$(realpath -m -- "$file" 2>/dev/null) || path=$file
  if is_compiled "$path"; then
    sources+=("$path")
  else
    unknown+=("check_lint.sh: the native preset does not compile this by itself: $file")
  fi
done
[ ${#unknown[@]} -eq 0 ] || refuse "${unknown[@]}"

cd "$root"
if [ ${#given[@]} -eq 0 ]; then
  while read -r file; do
    is_compiled "$root/$file" && sources+=("$root/$file")
  done < <(git ls-files "${rooms[@]/%//*.cpp}")
fi
[ ${#sources[@]} -gt 0 ] || refuse "check_lint.sh: the native preset compiles none of the sources"
# The tests' precompiled headers are GCC's, which clang cannot read; the sources include what they need.
mkdir -p build/native/lint
sed -E 's/ -Winvalid-pch| -include [^ "]*cmake_pch\.hxx//g' "$commands" \
  >build/native/lint/compile_commands.json
printf '%s\0' "${sources[@]}" | xargs -0 -P "$(nproc)" -n 4 clang-tidy -p build/native/lint --quiet
