#!/usr/bin/env bash
# Builds and runs the whole test suite: under the address and undefined behaviour sanitizers (clang), under
# the thread sanitizer (clang), and as released (g++). Sets up the machine first.
# Usage: test.sh [preset ...]    by default asan tsan release
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh test

# ccache goes by what compilers say that they have read, and does not preprocess each source first.
export CCACHE_DEPEND=1

presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(asan tsan release)
mkdir -p build
for preset in "${presets[@]}"; do
	echo "== $preset"
	# Sources are compiled in groups, which takes a third of the time; after edits, -DCMAKE_UNITY_BUILD=OFF builds less.
	cmake --preset "$preset" -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=32 \
		> "build/$preset.configure.log" 2>&1 || {
		cat "build/$preset.configure.log"
		exit 1
	}
	cmake --build --preset "$preset" --parallel "$(nproc)"
	# Some tests wait for clocks and for programs that they start.
	ctest --preset "$preset" --parallel $(($(nproc) + 1))
done
