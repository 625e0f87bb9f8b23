#!/usr/bin/env bash
# rewrite.sh [ORL_FINGER]: writes the golden lines anew with a built orl-finger (by default the
# native preset's). The commit that does so says why they moved; tests only compare.
set -euo pipefail
program=$(realpath "${1-$(dirname "$0")/../../build/native/bin/orl-finger}")
cd "$(dirname "$(realpath "$0")")/../.."
golden=tests/golden
"$program" match --pairs $golden/match_pairs.tsv --json >$golden/match.jsonl
xargs "$program" inspect --json <$golden/inspect_records.txt >$golden/inspect.jsonl
