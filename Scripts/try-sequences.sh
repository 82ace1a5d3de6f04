#!/usr/bin/env bash
# Plays random sequences in every way and compares what is heard: 10,000 of them by default, on all processors. The
# tests play 300. Prints the seeds that fail, each with a smaller sequence that fails likewise.
# Usage: try-sequences.sh [count [first seed]]
set -euo pipefail
cd "$(dirname "$0")/.."
count=${1:-10000}
first=${2:-1}
[ -f build/release/CMakeCache.txt ] || cmake --preset release > /dev/null
cmake --build --preset release --parallel "$(nproc)" --target random_sequence_tests > /dev/null

log=$(mktemp)
trap 'rm -f "$log"' EXIT
part=100
for ((seed = first; seed < first + count; seed += part)); do
	left=$((first + count - seed))
	echo "$seed $((left < part ? left : part))"
done | xargs -P "$(nproc)" -L 1 bash -c '
	SONARO_FIRST_SEED=$0 SONARO_SEQUENCE_SEEDS=$1 \
		build/release/Tests/Host/random_sequence_tests --gtest_filter="RandomSequence.*" --gtest_brief=1 2>&1 ||
		true' > "$log"
grep -v "^\[\|^Running main" "$log" || true
failed=$(grep -c "^seed " "$log" || true)
echo "$count sequences from seed $first on, $failed failures"
[ "$failed" -eq 0 ]
