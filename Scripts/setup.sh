#!/usr/bin/env bash
# Sees to it that what the build needs is there. Safe to run again, and quick when nothing is missing.
# Usage: setup.sh [build | test | docs | models | packages | abi]    "test" adds what only tests and benchmarks need,
#     "packages" what making and trying packages of Debian needs, "abi" what comparing interfaces needs; "docs" is what the
#     site needs, "models" what checks the models of what crosses threads
set -euo pipefail

packages=(g++ cmake ninja-build ccache pkg-config
	libboost-dev libxxhash-dev libcairo2-dev libsndfile1-dev libzip-dev libgraphviz-dev libutf8proc-dev libpango1.0-dev
	libavcodec-dev libavformat-dev libavutil-dev libswresample-dev
	liblilv-dev lv2-dev portaudio19-dev libncurses-dev libcpp-httplib-dev
	libmysofa-dev libeigen3-dev
	nlohmann-json3-dev libcli11-dev)
# Later versions take half the time of the one that Debian 12 began with.
tidy=clang-tidy
[ -z "$(apt-cache search --names-only '^clang-tidy-22$' 2> /dev/null)" ] || tidy=clang-tidy-22
docs=(doxygen furo python3 python3-breathe python3-myst-parser python3-numpy python3-sphinx)
if [ "${1:-build}" = test ]; then
	packages+=(clang clang-format "$tidy" libclang-rt-14-dev lld python3 libgtest-dev libgmock-dev libbenchmark-dev libebur128-dev
		ffmpeg librsvg2-bin lilv-utils lv2-examples mda-lv2
		pybind11-dev python3-dev python3-distributed python3-numpy python3-pytest python3-pip python3-venv python3-setuptools python3-wheel mypy
		"${docs[@]}")
elif [ "${1:-build}" = packages ]; then
	packages+=(dpkg-dev lintian mmdebstrap pybind11-dev python3-dev)
elif [ "${1:-build}" = abi ]; then
	packages+=(abigail-tools xz-utils)
elif [ "${1:-build}" = docs ]; then
	packages=("${docs[@]}")
elif [ "${1:-build}" = models ]; then
	packages=(gcc libc6-dev spin)
fi

missing=()
for package in "${packages[@]}"; do
	[ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

if [ "$(id -u)" -ne 0 ]; then
	echo "Missing packages. Install them as root and run this again:" >&2
	echo "  apt-get install ${missing[*]}" >&2
	exit 1
fi
echo "Installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" > /dev/null
