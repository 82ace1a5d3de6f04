#!/usr/bin/env bash
# Builds the wheel of the Python package, installs it into a fresh virtual environment, and renders and reads the example
# there. NumPy is that of the system. Usage: test-wheel.sh [PYTHON]    by default /usr/bin/python3
set -euo pipefail
cd "$(dirname "$0")/.."
python=${1:-/usr/bin/python3}
folder=$PWD/build/wheel
rm -rf "$folder/dist" "$folder/venv"
mkdir -p "$folder"
"$python" -m pip wheel . --no-build-isolation --no-deps --quiet --wheel-dir "$folder/dist"
"$python" -m venv --system-site-packages "$folder/venv"
"$folder/venv/bin/pip" install --quiet --no-index --no-deps --force-reinstall "$folder"/dist/sonaro-*.whl
cd "$folder"
"$folder/venv/bin/python" - ../../Examples/Timeline/edit.otio <<'PYTHON'
import sys
import sonaro

assert sonaro.__file__.startswith(sys.prefix), sonaro.__file__
report = sonaro.render(sys.argv[1], "mix.wav")
with sonaro.open(sys.argv[1]) as timeline:
    assert timeline.read(48000, 4096).shape == (2, 4096)
print(f"{sonaro.__file__}: sonaro {sonaro.__version__}, {report['outputs'][0]['integratedLufs']:.1f} LUFS")
PYTHON
