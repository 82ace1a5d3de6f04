#!/usr/bin/env bash
# Builds the benchmarks and measures how fast the engine is beside plain loops and other libraries, as ratios of one run.
# Usage: bench.sh                        compares with the last release in Benchmarks/Ratios.tsv; fails for a drop of over 10 %
#        bench.sh --record               records the ratios as those of this version
#        bench.sh --benchmark_filter=.   runs all benchmarks instead and prints their times; arguments go to each of them
# Scripts/bench-ratios.py says how noise is dealt with.
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh test

mkdir -p build
cmake --preset release > build/release.configure.log 2>&1 || {
	cat build/release.configure.log
	exit 1
}
targets=(benchmarks host_benchmarks)
case "${1:-}" in
"" | --record | --only | --rounds)
	cmake --build --preset release --parallel "$(nproc)" --target "${targets[@]}"
	exec Scripts/bench-ratios.py build/release "$@"
	;;
esac
cmake --build --preset release --parallel "$(nproc)" --target "${targets[@]}" export_benchmark
for program in "${targets[@]}"; do
	build/release/Benchmarks/$program "$@"
done
# Exports of whole timelines; half a gigabyte in the temporary folder meanwhile.
build/release/Benchmarks/export_benchmark
