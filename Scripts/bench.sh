#!/usr/bin/env bash
# Builds and runs the benchmarks, the engine's and the host's. Arguments go to each of them, for instance --benchmark_filter=Merge.
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh test

mkdir -p build
cmake --preset release > build/release.configure.log 2>&1 || {
	cat build/release.configure.log
	exit 1
}
cmake --build --preset release --parallel "$(nproc)" --target benchmarks host_benchmarks export_benchmark
for program in benchmarks host_benchmarks; do
	build/release/Benchmarks/$program "$@"
done
# Exports of whole timelines; half a gigabyte in the temporary folder meanwhile.
build/release/Benchmarks/export_benchmark
