#!/usr/bin/env bash
# Tries playback for long: against an export with seeks and loops, on a disk that becomes slow, at the start, and with
# everything at random on a fast clock. Prints a line of counts for each; the exit code says whether all were good.
# Usage: soak-playback.sh [seconds of each long trial, 600 by default [speed of the clock, 50 by default]]
#        soak-playback.sh --day [speed of the clock]   a simulated day of the last trial alone, in half an hour at 50
set -euo pipefail
cd "$(dirname "$0")/.."
isDay=0
if [ "${1:-}" = --day ]; then
	isDay=1
	set -- $((86400 / ${2:-50})) "${2:-50}"
fi
seconds=${1:-600}
speed=${2:-50}
[ -f build/release/CMakeCache.txt ] || cmake --preset release > /dev/null
cmake --build --preset release --parallel "$(nproc)" --target playback_trials sonaro > /dev/null
trials=build/release/Benchmarks/playback_trials

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
if [ $isDay = 1 ]; then
	echo "load $(cut -d ' ' -f 1-3 /proc/loadavg), $(nproc) processors"
	$trials soak "$folder" "$seconds" "$speed"
	exit
fi
Scripts/make-long-timeline.py "$folder/mix" --tracks 32 --seconds 600
Scripts/make-long-timeline.py "$folder/film" --tracks 64 --seconds 7200
build/release/Host/sonaro render "$folder/mix/edit.otio" -o "$folder/mix.wav" --layout stereo --rate 48000 --quiet

failed=0
echo "load $(cut -d ' ' -f 1-3 /proc/loadavg), $(nproc) processors"
$trials first "$folder/film/edit.otio" 100 || failed=1
$trials disk "$folder/mix/edit.otio" "$folder/mix.wav" 10 || failed=1
# Blocks of 128, 5 ms ahead: only an idle machine, or a high priority, is never late.
$trials exact "$folder/mix/edit.otio" "$folder/mix.wav" "$seconds" $((seconds * 5 / 3)) || failed=1
$trials soak "$folder" "$seconds" "$speed" || failed=1
echo "load $(cut -d ' ' -f 1-3 /proc/loadavg)"
exit $failed
