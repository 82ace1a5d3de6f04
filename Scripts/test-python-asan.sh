#!/usr/bin/env bash
# Runs the tests of the Python package under the address and undefined behaviour sanitizers. Everything is built with them
# and with their runtime as a shared library, which the interpreter is started with. What the interpreter and its packages
# never free is left out by Python/Tests/leaks.supp.
# Usage: test-python-asan.sh [option of pytest ...]
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh test
folder=build/python-asan
mkdir -p build
cmake --preset asan -B "$folder" -DSONARO_BUILD_TESTS=OFF -DSONARO_BUILD_PYTHON=ON -DSONARO_POISON_SILENCE=OFF \
	-DCMAKE_EXE_LINKER_FLAGS="-fuse-ld=lld -shared-libasan" -DCMAKE_SHARED_LINKER_FLAGS="-fuse-ld=lld -shared-libasan" \
	-DCMAKE_MODULE_LINKER_FLAGS="-fuse-ld=lld -shared-libasan" \
	-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=16 > "$folder.configure.log" 2>&1 || {
	cat "$folder.configure.log"
	exit 1
}
runtime=$(clang++ -print-file-name=libclang_rt.asan-x86_64.so)
export LD_LIBRARY_PATH=${runtime%/*}${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
cmake --build "$folder" --parallel "$(nproc)" --target sonaro _sonaro

export PYTHONPATH=$PWD/$folder/Python SONARO_COMMAND=$PWD/$folder/Host/sonaro SONARO_EXAMPLES=$PWD/Examples
export SONARO_TRIALS=${SONARO_TRIALS:-3} PYTHONMALLOC=malloc
export ASAN_OPTIONS=detect_leaks=1:malloc_context_size=12
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS=suppressions=$PWD/Python/Tests/leaks.supp:print_suppressions=0
# Without the cluster, whose workers are processes that are killed.
LD_PRELOAD=$runtime /usr/bin/python3 -B -m pytest -q -p no:cacheprovider --ignore=Python/Tests/test_farm.py "$@" Python/Tests
