#!/usr/bin/env bash
# Builds the site into a folder, every warning an error, and follows its links. Usage: build_site.sh FOLDER
set -euo pipefail
cd "$(dirname "$0")/../.."
if ! command -v doxygen > /dev/null || ! /usr/bin/python3 -c "import breathe, furo, myst_parser, numpy, sphinx" 2> /dev/null; then
	echo "The site is not built: install what it needs by Scripts/setup.sh docs"
	exit 77
fi
mkdir -p "$1"
/usr/bin/python3 -B Docs/Site/make_site.py "$1"
/usr/bin/python3 -B Tests/Documents/check_links.py "$1/html"
/usr/bin/python3 -B Tests/Documents/check_reference.py "$1"
