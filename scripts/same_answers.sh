#!/usr/bin/env bash
# same_answers.sh: builds the matcher with GCC and Clang at -O0, -O2 and -O3, with the sanitizers and
# for Windows, lets every build answer some 40,000 generated and hostile pairs of records (and those
# of ORL_RECORDS, where that is set), and holds the answers against those of the first build. Whole
# figures must be equal, fractional ones too, save that those from Windows may differ by 1e-5 of
# their size, and ties of two alignments may be decided otherwise there. All answers lie in
# build/same-answers, and so do the builds save those of presets. The exit status is 0 only when every
# build gives the same answers.
set -uo pipefail
if [ $# -gt 0 ]; then
  echo "usage: scripts/same_answers.sh, without arguments" >&2
  exit 2
fi
cd "$(dirname "$(realpath "$0")")/.." || exit 1
if [ -n "${ORL_RECORDS-}" ] && [ ! -d "$ORL_RECORDS" ]; then
  echo "same_answers.sh: ORL_RECORDS names no folder: $ORL_RECORDS" >&2
  exit 2
fi
folder=build/same-answers
mkdir -p "$folder"
first=gcc-O0
failed=0

# build NAME CMAKE-ARGUMENT...: configures in the folder that the arguments name and builds the one
# program.
build() {
  local name=$1
  shift
  { cmake "$@" && cmake --build "$(build_folder "$name")" --target orl-answers; } \
    >"$folder/$name.log" 2>&1 || { tail -20 "$folder/$name.log"; return 1; }
}

build_folder() {
  case $1 in
    asan | windows) echo "build/$1" ;;
    *) echo "$folder/$1" ;;
  esac
}

# list NAME: the build's answers, one line a pair.
list() {
  local path
  path=$(build_folder "$1")
  if [ "$1" = windows ]; then
    "$path/run_under_wine.sh" "$path/tests/orl-answers.exe" list
  else
    "$path/tests/orl-answers" list
  fi
}

# answer NAME CMAKE-ARGUMENT...: builds, runs and compares one build, and tells how it went.
answer() {
  local name=$1 outcome tolerance=(--exact)
  [ "$name" = windows ] && tolerance=()
  if build "$@" && list "$name" >"$folder/$name.answers" 2>>"$folder/$name.log" &&
    outcome=$("$folder/$first/tests/orl-answers" compare "${tolerance[@]}" \
      "$folder/$first.answers" "$folder/$name.answers"); then
    printf '%-10s same: %s\n' "$name" "$outcome"
  else
    printf '%-10s DIFFERS or failed: %s\n' "$name" "${outcome-see $folder/$name.log}"
    failed=1
  fi
}

for level in -O0 "-O2 -DNDEBUG" "-O3 -DNDEBUG"; do
  for compilers in "gcc g++" "clang clang++"; do
    read -r c cxx <<<"$compilers"
    name=$c${level%% *}
    answer "$name" -S . -B "$folder/$name" -G Ninja -DCMAKE_BUILD_TYPE= \
      -DCMAKE_C_COMPILER="$c" -DCMAKE_CXX_COMPILER="$cxx" \
      -DCMAKE_C_FLAGS="$level" -DCMAKE_CXX_FLAGS="$level"
  done
done
answer asan --preset asan
answer windows --preset windows
exit "$failed"
