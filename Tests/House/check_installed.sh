#!/usr/bin/env bash
# Installs a build into two temporary folders, moves both, and builds, links and runs the example hosts against them: that
# of the bare engine and that of SonaroHost, each through the CMake package and through pkg-config.
# Usage: check_installed.sh BUILD_FOLDER EXAMPLES_FOLDER COMPILER
set -euo pipefail
build=$1 examples=$2 compiler=$3
project=$examples/MinimalHost
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What CMake finds is in one folder, what pkg-config finds in another one.
cmake --install "$build" --prefix "$work/first" > "$work/install.log"
cmake --install "$build" --prefix "$work/second" --strip >> "$work/install.log"
mkdir "$work/moved copies"
mv "$work/first" "$work/moved copies/for CMake"
mv "$work/second" "$work/moved copies/for pkg-config"
installed="$work/moved copies/for CMake"
if grep -rIl "$work\|${build%/}" "$work/moved copies" > "$work/fixed"; then
	echo "These files name folders that an installed copy may be moved from:"
	cat "$work/fixed"
	exit 1
fi

# configure PROJECT FOLDER [OPTION...]
configure() {
	cmake -S "$1" -B "$2" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$installed" \
		"${@:3}" > "$work/configure.log" 2>&1
}

libraries=$(dirname "$(dirname "$(find "$work/moved copies/for pkg-config" -name sonaro.pc)")")
export PKG_CONFIG_PATH="$libraries/pkgconfig"
# compile MAIN PROGRAM PACKAGE: by the flags of pkg-config, in which it quotes as a shell does
compile() {
	local flags
	eval "flags=($(pkg-config --cflags --libs "$3"))"
	"$compiler" -std=c++20 "$1" -o "$2" "${flags[@]}" -Wl,-rpath,"$libraries"
}

# The engine alone asks for nothing that SonaroHost needs, all of which pkg-config finds.
configure "$project" "$work/package" -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=TRUE || { cat "$work/configure.log"; exit 1; }
cmake --build "$work/package"
"$work/package/minimal_host" "$work/package.wav"

compile "$project/main.cpp" "$work/by-pkg-config" sonaro
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

# What follows is there when the host was built.
if [ ! -x "$installed/bin/sonaro" ]; then
	exit 0
fi
"$installed/bin/sonaro" --version
if configure "$examples/Sequence" "$work/lacking" -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=TRUE; then
	echo "SonaroHost was found without what it is linked with"
	exit 1
fi
configure "$examples/Sequence" "$work/sequence" || { cat "$work/configure.log"; exit 1; }
cmake --build "$work/sequence"
media=$examples/Media
"$work/sequence/sequence" "$media/dialogue.flac" "$media/dialogue-reply.flac" "$media/music.flac" "$work/sequence.wav"
compile "$examples/Sequence/main.cpp" "$work/sequence-by-pkg-config" sonaro-host
"$work/sequence-by-pkg-config" "$media/dialogue.flac" "$media/dialogue-reply.flac" "$media/music.flac" "$work/same.wav"
cmp "$work/sequence.wav" "$work/same.wav"
"$installed/bin/sonaro" render "$media/dialogue.flac" -o "$work/dialogue.wav" --layout stereo > "$work/render.log"

# What the example promises: the first line alone for 4 s, all ending after 9.5 s, and music to the end.
python3 - "$work/sequence.wav" "$work/dialogue.wav" <<'EOF'
import struct, sys

def read(path):
    data, at = open(path, "rb").read(), 12
    while data[at:at + 4] != b"data":
        at += 8 + struct.unpack_from("<I", data, at + 4)[0]
    size = struct.unpack_from("<I", data, at + 4)[0]
    return struct.unpack_from(f"<{size // 4}f", data, at + 8)

mix, line = read(sys.argv[1]), read(sys.argv[2])
first = 2 * 4 * 48000
if len(mix) != 2 * 456000:
    sys.exit(f"{len(mix) / 2} frames instead of 456000")
if not any(line[:first]) or mix[:first] != line[:first]:
    sys.exit("the first line is not what its file holds")
if not any(left != right for left, right in zip(mix[-9600::2], mix[-9599::2])):
    sys.exit("no music at the end")
EOF
