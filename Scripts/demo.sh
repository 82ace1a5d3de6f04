#!/usr/bin/env bash
# Sets up a fresh machine, builds the sonaro command and renders the example timeline with it.
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh build

mkdir -p build/demo
if ! cmake -S . -B build/demo/tool -G Ninja -DCMAKE_BUILD_TYPE=Release -DSONARO_BUILD_TESTS=OFF \
	-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=80 \
	> build/demo/configure.log 2>&1; then
	cat build/demo/configure.log
	exit 1
fi
cmake --build build/demo/tool --parallel "$(nproc)"

sonaro=build/demo/tool/Host/sonaro
timeline=Examples/Timeline/edit.otio
echo
"$sonaro" render "$timeline" -o build/demo/mix.wav --report build/demo/mix.json
"$sonaro" waveform "$timeline" -o build/demo/mix.png --quiet
"$sonaro" graph "$timeline" -o build/demo/graph.svg --quiet
echo
echo "The mix:      $PWD/build/demo/mix.wav"
echo "Its report:   $PWD/build/demo/mix.json"
echo "Its waveform: $PWD/build/demo/mix.png"
echo "The graph:    $PWD/build/demo/graph.svg"
