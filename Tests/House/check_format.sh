#!/usr/bin/env bash
# Says which sources clang-format would write otherwise. Usage: check_format.sh CLANG_FORMAT ROOT
set -euo pipefail
cd "$2"
find API Benchmarks Docs Examples Host Inc Platform Python Src Tests \( -name '*.h' -o -name '*.cpp' \) -print0 |
	xargs -0 -P "$(nproc)" -n 50 "$1" --dry-run --Werror
