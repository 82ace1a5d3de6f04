#!/usr/bin/env bash
# Compares the binary interfaces of the shared libraries, as far as their public headers show them, with those that are
# recorded in API/ABI, and fails where a change would break programs that were built with the recorded ones.
# Usage: abi.sh              compares; a library with another soname than the recorded one may have changed in any way
#        abi.sh --record     records; done with each release, and with a change of the soname
# What is described is what g++ makes, in build/abi. CONTRIBUTING.md says what versions promise.
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh abi
build=$PWD/build/abi
records=API/ABI/$(uname -m)
mkdir -p "$build"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=g++ -DCMAKE_CXX_FLAGS=-g \
	-DSONARO_BUILD_HOST=OFF -DSONARO_BUILD_TESTS=OFF -DSONARO_BUILD_PYTHON=OFF -DSONARO_PRECOMPILE=none \
	-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=16 > "$build/configure.log" 2>&1 || {
	cat "$build/configure.log"
	exit 1
}
cmake --build "$build" --parallel "${SONARO_JOBS:-$(nproc)}"

headers=()
for folder in API/Inc Platform/*/Inc; do
	headers+=(--headers-dir "$PWD/$folder")
done
mkdir -p "$build/described"
mapfile -t libraries < <(find "$build/Src" "$build/Platform" -name 'lib*.so' | sort)
for library in "${libraries[@]}"; do
	name=$(basename "$library" .so)
	# Places in sources, folders of the build and types that no public header has are left out.
	abidw "${headers[@]}" --suppressions API/ABI/others.suppr --drop-private-types --no-show-locs --no-corpus-path \
		--no-comp-dir-path --no-elf-needed --type-id-style hash --out-file "$build/described/$name.abi" "$library"
done

if [ "${1:-}" = --record ]; then
	rm -rf "$records.new"
	mkdir -p "$records.new"
	for description in "$build"/described/*.abi; do
		xz -9e --stdout "$description" > "$records.new/$(basename "$description").xz"
	done
	rm -rf "$records"
	mv "$records.new" "$records"
	echo "${#libraries[@]} libraries recorded in $records, $(du -bs "$records" | cut -f1) bytes"
	exit 0
fi

get_soname() { sed -n "s/.* soname='\([^']*\)'.*/\1/p;q" "$1"; }
if [ ! -d "$records" ]; then
	echo "There is no record of $(uname -m): run Scripts/abi.sh --record in a clone of the last release, and bring $records here" >&2
	exit 2
fi
broken=0 renamed=0
for record in "$records"/*.abi.xz; do
	name=$(basename "$record" .abi.xz)
	before=$build/$name.before.abi
	now=$build/described/$name.abi
	xz --decompress --stdout "$record" > "$before"
	if [ ! -e "$now" ]; then
		echo "FAILED: $name is recorded and no longer built"
		broken=$((broken + 1))
	elif [ "$(get_soname "$before")" != "$(get_soname "$now")" ]; then
		echo "$name: the soname changed from $(get_soname "$before") to $(get_soname "$now"), so that everything may change"
		renamed=$((renamed + 1))
	# What is new breaks nothing. What else abidiff reports does, or may.
	# A file that it cannot read gives no code, but a message.
	elif ! abidiff --no-added-syms "$before" "$now" > "$build/$name.diff" 2> "$build/$name.errors" ||
		[ -s "$build/$name.errors" ]; then
		echo "FAILED: $name changed incompatibly, and its soname is still $(get_soname "$now"):"
		cat "$build/$name.diff" "$build/$name.errors"
		broken=$((broken + 1))
	fi
done
echo "${#libraries[@]} libraries compared with $records: $broken changed incompatibly, $renamed with a new soname"
[ "$broken" -eq 0 ]
