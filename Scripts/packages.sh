#!/usr/bin/env bash
# Makes the packages of Debian, checks them with lintian, installs them with apt-get into a fresh tree of Debian, uses them
# there, and removes them. Takes root, the mirrors that this system uses, and 2 GB below build/ meanwhile.
# Usage: packages.sh [--keep]    --keep leaves the tree at build/packages/tree
# DEBFULLNAME and DEBEMAIL, where they are set, are who makes the packages.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "$(id -u)" -ne 0 ]; then
	echo "packages.sh makes a tree of Debian, which takes root: run it as root" >&2
	exit 1
fi
Scripts/setup.sh packages
build=$PWD/build/packages
tree=$build/tree
packages=$build/deb
mkdir -p "$build"

# The time of the last commit is that of all files, so that the same sources give the same packages.
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)
export SOURCE_DATE_EPOCH
# Sources are compiled as for a release, and linked as Debian links.
linking=$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get LDFLAGS)
options=(-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=16)
options+=("-DCMAKE_EXE_LINKER_FLAGS=$linking" "-DCMAKE_SHARED_LINKER_FLAGS=$linking")
options+=("-DCMAKE_MODULE_LINKER_FLAGS=$linking" -DPython3_EXECUTABLE=/usr/bin/python3)
if [ -n "${DEBEMAIL:-}" ]; then
	options+=("-DSONARO_PACKAGE_CONTACT=${DEBFULLNAME:-The Sonaro maintainers} <$DEBEMAIL>")
fi
cmake --preset packages "${options[@]}" > build/packages.configure.log 2>&1 || {
	cat build/packages.configure.log
	exit 1
}
cmake --build --preset packages --parallel "${SONARO_JOBS:-$(nproc)}"

rm -rf "$packages"
(umask 022 && cpack --config "$build/CPackConfig.cmake" -G DEB -B "$packages" > "$build/cpack.log" 2>&1) || {
	cat "$build/cpack.log"
	exit 1
}
rm -rf "$packages/_CPack_Packages"
# With overridden warnings on show, it ends with 2 for them as well; 1 is a fault of its own.
status=0
lintian --allow-root --info --show-overrides "$packages"/*.deb > "$build/lintian.log" || status=$?
if [ "$status" -eq 1 ] || grep -q '^[EW]:' "$build/lintian.log"; then
	cat "$build/lintian.log"
	exit 1
fi
overridden=$(grep -c '^O:' "$build/lintian.log" || true)

# A fresh tree, from where this system has its packages.
rm -rf "$tree"
[ "${1:-}" = --keep ] || trap 'rm -rf "$tree"' EXIT
. /etc/os-release
sources=/etc/apt/sources.list.d/debian.sources
[ -e $sources ] || sources=/etc/apt/sources.list
mmdebstrap --variant=minbase --quiet "$VERSION_CODENAME" "$tree" $sources

# What is done there, and what has to come out of it.
mkdir "$tree/try"
cp -r "$packages" "$tree/try/deb"
cp -r Examples README.md Scripts/try-packages.sh "$tree/try/"
render="$build/Host/sonaro render --quiet"
$render Examples/Timeline/edit.otio -o "$tree/try/expected.wav"
chroot "$tree" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/root \
	/try/try-packages.sh > "$build/try.log" 2>&1 || {
	cat "$build/try.log"
	exit 1
}
checks=$(grep -c '^ok: ' "$build/try.log")
count=$(find "$packages" -name '*.deb' | wc -l)
# Removing the tree takes minutes on a slow disk; the line of counts says that all is done.
[ "${1:-}" = --keep ] || rm -rf "$tree"
echo "$count packages in $packages: lintian has no errors or warnings ($overridden overridden with reasons), $checks checks passed in a fresh tree of Debian $VERSION_CODENAME"
