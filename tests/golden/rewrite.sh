#!/usr/bin/env bash
# rewrite.sh [BUILD]: writes the golden lines anew with the programs orl-finger and orl-answers of a
# build folder (by default the native preset's). The commit that does so says why they moved; tests
# only compare.
set -euo pipefail
build=$(realpath "${1-$(dirname "$0")/../../build/native}")
cd "$(dirname "$(realpath "$0")")/../.."
golden=tests/golden
"$build/bin/orl-finger" match --pairs $golden/match_pairs.tsv --json >$golden/match.jsonl
xargs "$build/bin/orl-finger" inspect --json <$golden/inspect_records.txt >$golden/inspect.jsonl
"$build/tests/orl-answers" digest >$golden/answers.jsonl
