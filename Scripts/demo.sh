#!/usr/bin/env bash
# Sets up a fresh machine, builds the sonaro command and renders an example with it.
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh build

mkdir -p build/demo
if ! cmake -S . -B build/demo/tool -G Ninja -DCMAKE_BUILD_TYPE=Release -DSONARO_BUILD_TESTS=OFF \
	> build/demo/configure.log 2>&1; then
	cat build/demo/configure.log
	exit 1
fi
cmake --build build/demo/tool --parallel "$(nproc)"

sonaro=build/demo/tool/Host/sonaro
echo
"$sonaro" info Examples/Media/dialogue.flac
echo
"$sonaro" render Examples/Media/dialogue.flac --gain-db -3 -o build/demo/dialogue.wav
echo
echo "The render: $PWD/build/demo/dialogue.wav"
