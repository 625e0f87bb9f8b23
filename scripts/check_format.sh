#!/usr/bin/env bash
# check_format.sh [--fix]: checks that every C and C++ source is formatted as .clang-format says.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")/.."
mode=(--dry-run --Werror)
[ "${1-}" = --fix ] && mode=(-i)
git ls-files -z '*.h' '*.cpp' '*.c' | xargs -0 -r clang-format "${mode[@]}"
