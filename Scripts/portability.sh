#!/usr/bin/env bash
# Builds and tests on other compilers, libraries, processors and systems, and compares what comes out, to the bit, with a
# build by g++ for this machine. Missing packages are installed with apt-get, as root; none is removed for them.
# Usage: portability.sh [variants | clang | libc++ | aarch64 | windows ...]    all of them by default
#
# SONARO_JOBS: how many compilers, and processes of one test program, run at a time; as many as there are processors by
# default.
# SONARO_PORTABILITY: the folder for builds and libraries, build/portability by default.
set -uo pipefail
cd "$(dirname "$0")/.."
work=${SONARO_PORTABILITY:-$PWD/build/portability}
jobs=${SONARO_JOBS:-$(nproc)}
mkdir -p "$work"
suite=$(. /etc/os-release && echo "${VERSION_CODENAME:-bookworm}")
mirror=http://deb.debian.org/debian

libraryTests=(zorvcore_tests zorvmediatypes_tests zorvaccelerate_tests zorvaudiodsp_tests vexilon_tests
	engine_tests resampler_tests)

systems=0 tests=0 failures=0 equal=0 different=0
fail() {
	echo "$1" >&2
	failures=$((failures + 1))
}

# install package ...: as far as they are missing.
install() {
	local missing=()
	for package in "$@"; do
		[ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2> /dev/null)" = installed ] || missing+=("$package")
	done
	[ ${#missing[@]} -gt 0 ] || return 0
	if [ "$(id -u)" -ne 0 ]; then
		echo "Missing packages. Install them as root and run this again: apt-get install ${missing[*]}" >&2
		return 1
	fi
	echo "Installing ${missing[*]}"
	DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends --no-remove "${missing[@]}" > /dev/null
}

# What is made of headers and sources alone, apart from all else that lies beside it on this machine.
make_headers() {
	install libboost-dev libxxhash-dev googletest || return 1
	mkdir -p "$work/headers/include"
	ln -sfn /usr/include/boost /usr/include/xxhash.h "$work/headers/include"
}

# configure name option ...
configure() {
	local name=$1
	shift
	cmake -S . -B "$work/$name" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_UNITY_BUILD=ON \
		-DCMAKE_UNITY_BUILD_BATCH_SIZE=16 -DSONARO_BUILD_PYTHON=OFF "$@" > "$work/$name.log" 2>&1 ||
		{ tail -n 20 "$work/$name.log" >&2; return 1; }
}

# build name target ...
build() {
	local name=$1
	shift
	cmake --build "$work/$name" --parallel "$jobs" --target "$@" >> "$work/$name.log" 2>&1 ||
		{ grep -E "error|FAILED" "$work/$name.log" | tail -n 20 >&2; return 1; }
}

# run_shard name test emulator index: one of as many shares of a program's tests as there are jobs.
run_shard() {
	local program
	program=$(find "$work/$1" \( -name "$2" -o -name "$2.exe" \) -type f | head -n 1)
	[ -n "$program" ] && cd "$(dirname "$program")" || return 1
	# shellcheck disable=SC2086 # The emulator and its options are several words.
	GTEST_TOTAL_SHARDS=$jobs GTEST_SHARD_INDEX=$4 timeout 3600 $3 "$program" --gtest_brief=1
}

# count pattern file: the number that the pattern's last match has.
count() {
	sed -n "s/$1/\1/p" "$2" | tail -n 1 | grep . || echo 0
}

# run_tests name emulator test ...: each program by itself, in several processes, counted by what they say.
run_tests() {
	local name=$1 emulator=$2 passed=0 failed=0 test index log processes
	shift 2
	for test in "$@"; do
		processes=()
		for ((index = 0; index < jobs; index++)); do
			run_shard "$name" "$test" "$emulator" "$index" > "$work/$name.$test.$index.log" 2>&1 &
			processes+=($!)
		done
		for ((index = 0; index < jobs; index++)); do
			log=$work/$name.$test.$index.log
			if ! wait "${processes[index]}"; then
				fail "$name: $test failed, see $log"
				grep -aE "^\[  FAILED  \]" "$log" | sed 's/\r//' | sort -u | head -n 20 >&2
			fi
			passed=$((passed + $(count '^\[  PASSED  \] \([0-9]*\) test.*' "$log")))
			failed=$((failed + $(count '^ *\([0-9]*\) FAILED TEST.*' "$log")))
		done
	done
	tests=$((tests + passed))
	echo "$name: $passed tests passed, $failed failed"
}

# compare name command ...: the lines of the digest with those of the reference, by the names of their groups.
compare() {
	local name=$1 same=0 other=0
	shift
	if ! "$@" 2> "$work/$name.digest.err" | tr -d '\r' > "$work/$name.digest"; then
		fail "$name: no digest; $(tail -n 1 "$work/$name.digest.err")"
		return
	fi
	while read -r line; do
		if grep -qxF "$line" "$work/$name.digest"; then
			same=$((same + 1))
		else
			other=$((other + 1))
			fail "$name: other bits in \"$(echo "$line" | cut -c 30-)\""
		fi
	done < "$work/reference.digest"
	equal=$((equal + same))
	different=$((different + other))
	echo "$name: $same digests equal, $other different"
}

run_reference() {
	echo "reference: g++ on $(uname -m)"
	configure reference -DCMAKE_CXX_COMPILER=g++ -DSONARO_HOST_FILES=OFF && build reference digest &&
		"$work/reference/Tests/Digest/digest" > "$work/reference.digest" || { echo "There is no reference" >&2; exit 1; }
}

# What processors run whose vectors are narrower. Levels that this one lacks are those that it has.
run_variants() {
	for level in baseline x86-64-v3 x86-64-v4; do
		compare "$level" env ZORV_PROCESSOR_LEVEL=$level "$work/reference/Tests/Digest/digest"
	done
}

run_clang() {
	install clang lld || return 1
	configure clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld -DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld &&
		build clang digest "${libraryTests[@]}" || return 1
	run_tests clang "" "${libraryTests[@]}"
	compare clang "$work/clang/Tests/Digest/digest"
}

# The packages of libc++ replace others of their kind, so they are unpacked instead of installed.
run_libcxx() {
	install clang-22 libboost-dev libxxhash-dev googletest || return 1
	if [ ! -d "$work/libc++" ]; then
		mkdir -p "$work/debs"
		(cd "$work/debs" && apt-get download -qq libc++-22-dev libc++abi-22-dev) 2> /dev/null || return 1
		for package in "$work"/debs/*.deb; do
			dpkg -x "$package" "$work/libc++.part"
		done
		mv "$work/libc++.part" "$work/libc++"
	fi
	configure libcxx --toolchain cmake/toolchains/x86_64-linux-libc++.cmake -DSONARO_LIBCXX="$work/libc++/usr/lib/llvm-22" \
		-DSONARO_HOST_FILES=OFF -DSONARO_GOOGLETEST_SOURCE=/usr/src/googletest -DSONARO_WARNINGS_AS_ERRORS=OFF \
		-DSONARO_PRECOMPILE=none &&
		build libcxx digest "${libraryTests[@]}" host_core_tests || return 1
	run_tests libcxx "" "${libraryTests[@]}" host_core_tests
	compare libcxx "$work/libcxx/Tests/Digest/digest"
}

run_aarch64() {
	install g++-aarch64-linux-gnu qemu-user mmdebstrap || return 1
	local tree=$work/arm64
	if [ ! -d "$tree" ]; then
		mmdebstrap --quiet --variant=extract --architectures=arm64 \
			--include=libc6-dev,libstdc++-12-dev,libboost-dev,libxxhash-dev,libgtest-dev,libgmock-dev \
			"$suite" "$tree.part" $mirror && mv "$tree.part" "$tree" || return 1
	fi
	# Emulation is as slow as sanitizers are.
	configure aarch64 --toolchain cmake/toolchains/aarch64-linux.cmake -DSONARO_TARGET_TREE="$tree" \
		-DSONARO_HOST_FILES=OFF -DSONARO_PRECOMPILE=none -DSONARO_FEWER_TRIALS=8 &&
		build aarch64 digest "${libraryTests[@]}" host_core_tests || return 1
	# Tests of how a process dies run their program again, which the system cannot without an emulator.
	export GTEST_FILTER=-*DeathTest*
	run_tests aarch64 "qemu-aarch64 -L $tree" "${libraryTests[@]}" host_core_tests
	unset GTEST_FILTER
	compare aarch64 qemu-aarch64 -L "$tree" "$work/aarch64/Tests/Digest/digest"
}

run_windows() {
	install g++-mingw-w64-x86-64-posix wine64 wine && make_headers || return 1
	configure windows --toolchain cmake/toolchains/x86_64-windows.cmake -DSONARO_TARGET_TREE="$work/headers" \
		-DSONARO_HOST_FILES=OFF -DSONARO_GOOGLETEST_SOURCE=/usr/src/googletest -DSONARO_PRECOMPILE=none &&
		build windows digest "${libraryTests[@]}" host_core_tests || return 1
	local wine
	wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)
	# The debugger, which tests of how a process dies would start, takes minutes.
	export WINEDEBUG=-all WINEDLLOVERRIDES=winedbg.exe=d WINEPREFIX=$work/wine
	# The compiler's own libraries.
	local libraries
	libraries="$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)");/usr/x86_64-w64-mingw32/lib"
	export WINEPATH=$libraries
	run_tests windows "$wine" "${libraryTests[@]}" host_core_tests
	compare windows "$wine" "$work/windows/bin/digest.exe"
}

[ $# -gt 0 ] || set -- variants clang libc++ aarch64 windows
for system in "$@"; do
	case $system in
	variants | clang | libc++ | aarch64 | windows) ;;
	*)
		echo "\"$system\" is not known. Usage: portability.sh [variants | clang | libc++ | aarch64 | windows ...]" >&2
		exit 2
		;;
	esac
done
run_reference
for system in "$@"; do
	systems=$((systems + 1))
	"run_${system/++/xx}" || fail "$system: not built or not run, see $work"
done
echo "$systems systems, $tests tests passed, $equal digests equal, $different different, $failures failures"
[ "$failures" -eq 0 ]
