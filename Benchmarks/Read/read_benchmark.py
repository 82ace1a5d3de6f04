#!/usr/bin/env python3
"""What reading a timeline costs in Python, in blocks of 4096, beside the same in C++: pulling the graph, and the reader
that both stand on. Usage: PYTHONPATH=build/release/Python Benchmarks/Read/read_benchmark.py [TIMELINE...]

Each takes turns with the others, and the least time of a block counts. By default, the example and 32 tracks of noise.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

import sonaro

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = ROOT / "build/release/Benchmarks/read_benchmark"
BLOCK = 4096
ROUNDS = 7


def measure(timeline):
    start = time.perf_counter()
    for first in range(0, timeline.frames, BLOCK):
        timeline.read(first, BLOCK)
    return (time.perf_counter() - start) * 1e9 * BLOCK / timeline.frames


def compare(path):
    pulls, reads, pythons = [], [], []
    with sonaro.open(path) as timeline:
        measure(timeline)
        for _ in range(ROUNDS):
            pull, read = map(float, subprocess.run([PROGRAM, path, "2"], capture_output=True, text=True, check=True).stdout.split())
            pulls.append(pull)
            reads.append(read)
            pythons.append(min(measure(timeline), measure(timeline)))
    pull, read, python = min(pulls), min(reads), min(pythons)
    print(f"{path}: pull {pull / 1000:.1f} us a block, reader {read / 1000:.1f} us ({read / pull:.3f}), "
          f"Python {python / 1000:.1f} us ({python / pull:.3f})")


def main():
    print("load", *os.getloadavg(), "at the start")
    with tempfile.TemporaryDirectory() as folder:
        paths = sys.argv[1:]
        if not paths:
            subprocess.run([ROOT / "Scripts/make-long-timeline.py", folder, "--tracks", "32", "--seconds", "60"], check=True)
            paths = [ROOT / "Examples/Timeline/edit.otio", pathlib.Path(folder) / "edit.otio"]
        for path in paths:
            compare(path)


main()
