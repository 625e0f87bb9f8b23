#!/usr/bin/env bash
# check_format.sh [--fix]: checks that every C and C++ source is formatted as .clang-format says, or
# formats them.
set -euo pipefail
case "$*" in
  "") mode=(--dry-run --Werror) ;;
  --fix) mode=(-i) ;;
  *)
    echo "usage: scripts/check_format.sh [--fix]" >&2
    exit 2
    ;;
esac
cd "$(dirname "$(realpath "$0")")/.."
git ls-files -z '*.h' '*.cpp' '*.c' | xargs -0 -r clang-format "${mode[@]}"
