#!/usr/bin/env bash
# Builds the documentation as a site: build/docs/html/index.html. Installs what it needs.
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh docs
Tests/Documents/build_site.sh build/docs
