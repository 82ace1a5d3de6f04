#!/usr/bin/env bash
# Fails when the documents here differ from those that the program writes.
# Usage: compare-documents.sh GENERATE_DOCUMENTS
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
fresh=$(mktemp -d)
trap 'rm -rf "$fresh"' EXIT
"$1" "$fresh"
for document in "$fresh"/*; do
	cmp "$here/$(basename "$document")" "$document" || {
		echo "Docs/$(basename "$document") is out of date; run Docs/make-documents.sh" >&2
		exit 1
	}
done
