#!/usr/bin/env bash
# Installs, uses and removes the packages in a fresh tree of Debian, in whose folder /try packages.sh has put them with the
# examples and the expected mix. Each check prints a line that begins with "ok: ".
set -euo pipefail
cd /try
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
install() { apt-get install -y -qq --no-install-recommends "$@" > apt.log 2>&1 || { cat apt.log; exit 1; }; }
ok() { echo "ok: $*"; }
same() {
	cmp "$1" expected.wav
	ok "$2 gives the bytes of the build"
}
# Everything but what apt and dpkg note for themselves
list_files() {
	find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /try -o -path /tmp -o -path /var/lib/dpkg \
		-o -path /var/lib/apt -o -path /var/cache -o -path /var/log \) -prune -o -print | sort
}
names=()
for package in deb/*.deb; do
	names+=("$(dpkg-deb -f "$package" Package)")
done

# What the packages need stays after the first removal, so that a second one has to lead back to the same files.
install ./deb/*.deb
ok "installed: ${names[*]}"
apt-get purge -y -qq "${names[@]}" > /dev/null
install g++ cmake make pkg-config
list_files > before
if grep -i 'sonaro\|zorv\|vexilon' before; then
	echo "These files were left by the removal."
	exit 1
fi
install ./deb/*.deb
for package in "${names[@]}"; do
	version=$(dpkg-query -W -f '${Version}' "$package")
	dpkg --verify "$package" | grep . && exit 1
	ok "$package $version has the files that it lists"
done

cat > needed.sh <<'NEEDED'
for file in $(dpkg -L "$@" | grep '/lib.*\.so\|/bin/'); do
	ldd "$file"
done
NEEDED
if bash needed.sh "${names[@]}" 2>&1 | grep 'not found'; then
	exit 1
fi
ok "all libraries are found"

sonaro render Examples/Timeline/edit.otio -o command.wav --quiet
same command.wav "the command"
sonaro render /usr/share/doc/sonaro/Examples/Timeline/edit.otio -o installed.wav --quiet
same installed.wav "the example that is installed"
sonaro --version
gunzip -c /usr/share/man/man1/sonaro.1.gz | grep -q '^\.TH SONARO'
bash -n /usr/share/bash-completion/completions/sonaro
ok "man page and completions"

python3 - <<'PYTHON'
import glob
import os
import re
import sys

lost = []
for page in glob.glob("/usr/share/doc/sonaro/**/*.md", recursive=True):
    with open(page, encoding="utf-8") as file:
        links = re.findall(r"\]\(([^)#\s]+)(?:#[^)]*)?\)", file.read())
    lost += [f"{page}: {link}" for link in links
             if "://" not in link and not os.path.exists(os.path.join(os.path.dirname(page), link))]
if lost:
    sys.exit("There is no file for these links:\n" + "\n".join(lost))
PYTHON
ok "links between the documents that are installed lead to files"

# The README's example, as it stands there: the blocks after the words "CMakeLists.txt" and "main.cpp".
mkdir first
for file in CMakeLists.txt main.cpp; do
	awk -v name="\`$file\`:" 'index($0, name) {found = 1} found == 2 && /^```/ {exit} found == 2 {print}
		found == 1 && /^```/ {found = 2}' README.md > first/$file
	[ -s first/$file ]
done
cmake -S first -B first/build > cmake.log && cmake --build first/build >> cmake.log
first/build/first Examples/Timeline/edit.otio by-cmake.wav
same by-cmake.wav "the README's example, built by CMake,"
read -ra flags <<< "$(pkg-config --cflags --libs sonaro-host)"
g++ -std=c++20 first/main.cpp -o first/by-pkg-config "${flags[@]}"
first/by-pkg-config Examples/Timeline/edit.otio by-pkg-config.wav
same by-pkg-config.wav "the README's example, built by pkg-config,"
read -ra flags <<< "$(pkg-config --cflags --libs sonaro)"
g++ -std=c++20 Examples/MinimalHost/main.cpp -o minimal "${flags[@]}"
./minimal minimal.wav
cmake -S Examples/MinimalHost -B minimal-build > cmake.log && cmake --build minimal-build >> cmake.log
minimal-build/minimal_host minimal-by-cmake.wav
cmp minimal.wav minimal-by-cmake.wav
ok "the bare engine by pkg-config and by CMake, with the same bytes"

python3 - <<'PYTHON'
import numpy
import sonaro

report = sonaro.render("Examples/Timeline/edit.otio", "python.wav")
with sonaro.open("Examples/Timeline/edit.otio") as timeline:
    samples = timeline.read(48000, 4096)
assert samples.shape == (2, 4096) and numpy.abs(samples).max() > 0, samples
print(sonaro.__file__, sonaro.__version__, report["outputs"][0]["integratedLufs"])
PYTHON
same python.wav "Python"

apt-get purge -y -qq "${names[@]}" > /dev/null
list_files > after
diff before after
ok "no file is left after the removal"
