#!/usr/bin/env bash
# Runs what crosses threads for a minute each under the thread sanitizer; the tests do so for seconds.
# Usage: stress.sh [seconds]
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh test

mkdir -p build
cmake --preset tsan > build/tsan.configure.log 2>&1 || {
	cat build/tsan.configure.log
	exit 1
}
cmake --build --preset tsan --parallel "$(nproc)" --target engine_tests
SONARO_STRESS_SECONDS=${1:-60} build/tsan/Tests/AudioRender/engine_tests --gtest_filter='*Stress*'
