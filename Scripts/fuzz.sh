#!/usr/bin/env bash
# Feeds readers with inputs that are changed at random, under the address and undefined behaviour sanitizers (libFuzzer,
# clang++). Inputs begin with Tests/Fuzz/Corpus and with what earlier runs have found, in build/fuzz/corpora. An input that
# breaks something is kept in build/fuzz/findings. Ends with a line of counts; the exit code says whether nothing broke.
# Usage: fuzz.sh [TARGET|all [COUNT [SECONDS of each target, 0 for no limit]]]
#   COUNT     inputs of each target, 1000000 by default
#   TARGET    timelines, bundles, sounds, movies, sofa, effects, curves, requests, comments or plans
set -euo pipefail
cd "$(dirname "$0")/.."
all="timelines bundles sounds movies sofa effects curves requests comments plans"
targets=${1:-all}
[ "$targets" != all ] || targets=$all
count=${2:-1000000}
seconds=${3:-0}
build=build/fuzz

# The program that reads it, and its options.
describe() {
	case $1 in
	timelines) echo otio_reader_fuzz -max_len=16384 -dict=Tests/Fuzz/Otio.dict ;;
	bundles) echo bundle_reader_fuzz -max_len=8192 -dict=Tests/Fuzz/Otio.dict ;;
	sounds | movies) echo media_reader_fuzz -max_len=20000 -timeout=30 ;;
	sofa) echo sofa_reader_fuzz -max_len=16384 ;;
	effects) echo effect_reader_fuzz -max_len=4096 -dict=Tests/Fuzz/Otio.dict ;;
	curves) echo curve_fuzz -max_len=1024 ;;
	requests) echo request_fuzz -max_len=4096 -dict=Tests/Fuzz/Request.dict -close_fd_mask=0 ;;
	comments) echo comment_file_fuzz -max_len=4096 ;;
	plans) echo plan_reader_fuzz -max_len=8192 ;;
	*)
		echo "fuzz.sh: there is no target '$1'; choose among $all" >&2
		exit 2
		;;
	esac
}

for target in $targets; do describe "$target" > /dev/null; done
command -v clang++ > /dev/null || {
	echo "fuzz: skipped; install clang, which brings libFuzzer" >&2
	exit 1
}
mkdir -p $build/findings
cmake -S . -B $build -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	-DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG" -DSONARO_BUILD_FUZZERS=ON -DSONARO_BUILD_PYTHON=OFF \
	-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=16 -DSONARO_SANITIZE=address,undefined \
	-DSONARO_WARNINGS_AS_ERRORS=OFF > $build/configure.log

# Inputs are files, which a folder in memory holds best.
folder=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")" sonaro-fuzz-XXXXXX)
trap 'rm -rf "$folder"' EXIT
export TMPDIR=$folder
# What is freed is kept for long enough to find its uses by the same input, and memory that is still in the caches is used again.
export ASAN_OPTIONS=allocator_may_return_null=1:quarantine_size_mb=16:malloc_context_size=8 UBSAN_OPTIONS=print_stacktrace=1
export LSAN_OPTIONS=print_suppressions=0:suppressions=$PWD/Tests/Fuzz/leaks-of-libraries.txt

done=0 tried=0 broken=0
for target in $targets; do
	read -r -a words <<< "$(describe "$target")"
	programs=("${words[0]}")
	[ "$target" != timelines ] || programs+=(write_otio_seeds)
	cmake --build $build --parallel "${JOBS:-$(nproc)}" --target "${programs[@]}" > $build/build.log || {
		tail -40 $build/build.log
		exit 1
	}
	corpus=$build/corpora/$target
	mkdir -p "$corpus"
	[ ! -d "Tests/Fuzz/Corpus/$target" ] || cp -rn "Tests/Fuzz/Corpus/$target/." "$corpus/"
	[ "$target" != timelines ] || $build/Tests/Fuzz/write_otio_seeds "$corpus"
	log=$build/$target.log
	status=0
	# Choosing inputs by their rarest features (entropic) takes longer than running them.
	"$build/Tests/Fuzz/${words[0]}" "${words[@]:1}" -runs="$count" -max_total_time="$seconds" -entropic=0 -print_final_stats=1 \
		-rss_limit_mb=4096 -artifact_prefix="$build/findings/$target-" "$corpus" > "$log" 2>&1 || status=$?
	runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
	tried=$((tried + ${runs:-0}))
	done=$((done + 1))
	if [ $status -ne 0 ]; then
		broken=$((broken + 1))
		grep -E "ERROR|runtime error|SUMMARY|Test unit written" "$log" | head -5 || tail -5 "$log"
	fi
	echo "$target: ${runs:-0} inputs of $count, $(find "$corpus" -type f | wc -l) kept, $([ $status -eq 0 ] && echo nothing broke || echo BROKEN)"
done
echo "fuzz: $done targets, $tried inputs, $broken broken"
[ $broken -eq 0 ]
