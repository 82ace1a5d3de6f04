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
"$work/package/installed"

export PKG_CONFIG_PATH="$work/installed/lib/pkgconfig"
read -ra flags <<< "$(pkg-config --cflags --libs --define-variable=prefix="$work/installed" sonaro)"
"$compiler" -std=c++20 "$project/main.cpp" -o "$work/by-pkg-config" "${flags[@]}" \
	-Wl,-rpath,"$work/installed/lib"
"$work/by-pkg-config"

if [ -x "$work/installed/bin/sonaro" ]; then
	"$work/installed/bin/sonaro" --version
fi
