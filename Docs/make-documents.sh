#!/usr/bin/env bash
# Writes the documents that are measured on the engine: channel-conversions.md, pan-laws.svg, resamplers.md
# and resamplers.svg.
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh test
mkdir -p build
cmake --preset release > build/release.configure.log 2>&1 || {
	cat build/release.configure.log
	exit 1
}
cmake --build --preset release --parallel "$(nproc)" --target generate_documents
build/release/Docs/generate_documents Docs
