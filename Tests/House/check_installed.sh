#!/usr/bin/env bash
# Installs a build into a temporary folder and builds, links and runs a small project against it: once
# through the CMake package, once through pkg-config.
# Usage: check_installed.sh BUILD_FOLDER PROJECT_FOLDER COMPILER
set -euo pipefail
build=$1 project=$2 compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/installed" > "$work/install.log"

cmake -S "$project" -B "$work/package" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
	-DCMAKE_PREFIX_PATH="$work/installed" > "$work/configure.log"
cmake --build "$work/package"
"$work/package/minimal_host" "$work/package.wav"

export PKG_CONFIG_PATH="$work/installed/lib/pkgconfig"
read -ra flags <<< "$(pkg-config --cflags --libs sonaro)"
"$compiler" -std=c++20 "$project/main.cpp" -o "$work/by-pkg-config" "${flags[@]}" \
	-Wl,-rpath,"$work/installed/lib"
"$work/by-pkg-config" "$work/by-pkg-config.wav"

# What the example promises: a tone from 0 to 1 s, one an octave above from 0.5 to 1.5 s, then silence.
cmp "$work/package.wav" "$work/by-pkg-config.wav"
python3 - "$work/package.wav" <<'EOF'
import math, struct, sys

data = open(sys.argv[1], "rb").read()
samples = struct.unpack("<192000f", data[44:])
for frame in range(96000):
    tone = lambda hertz: 0.25 * math.sin(2 * math.pi * hertz * frame / 48000)
    delayed = 0.25 * math.sin(2 * math.pi * 880 * (frame - 24000) / 48000)
    expected = (tone(440) if frame < 48000 else 0) + (delayed if 24000 <= frame < 72000 else 0)
    for channel in range(2):
        if abs(samples[2 * frame + channel] - expected) > 1e-6:
            sys.exit(f"frame {frame}: {samples[2 * frame + channel]} instead of {expected}")
EOF

if [ -x "$work/installed/bin/sonaro" ]; then
	"$work/installed/bin/sonaro" --version
fi
