#!/usr/bin/env python3
"""Reads a timeline at random places for long, and watches the memory of the process.

Usage: PYTHONPATH=build/release/Python Scripts/soak-python.py [SECONDS, 3600 by default [TIMELINE]]

Some reads are compared with a render, tracks are read alone, and the timeline is opened anew now and then. Prints the
memory each minute; fails when the last third of the minutes needs more than the second third by 2 MiB, or a read is wrong.
By default, the timeline is 16 tracks of noise.
"""
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time

import numpy
import sonaro

ROOT = pathlib.Path(__file__).resolve().parents[1]
MOST_GROWTH = 2 * 1024 * 1024


def get_memory():
    """Bytes of the process that are in memory."""
    return int(pathlib.Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def read_for(path, seconds, mix, choose):
    """Reads until then; the number of reads."""
    end, count = time.monotonic() + seconds, 0
    while time.monotonic() < end:
        with sonaro.open(path) as timeline:
            for _ in range(500):
                start, frames = choose.randrange(-5000, timeline.frames), choose.choice([1, 512, 4096, 20000])
                track = choose.choice([None, None, None, choose.randint(1, len(timeline.tracks))])
                samples = timeline.read(start, frames, track)
                count += 1
                if track is None and start >= 0 and start + frames <= timeline.frames:
                    assert samples.tobytes() == numpy.ascontiguousarray(mix[:, start:start + frames]).tobytes(), start
                if time.monotonic() > end:
                    break
    return count


def main():
    seconds = float(sys.argv[1]) if len(sys.argv) > 1 else 3600.0
    choose = random.Random(1)
    with tempfile.TemporaryDirectory() as folder:
        if len(sys.argv) > 2:
            path = pathlib.Path(sys.argv[2])
        else:
            subprocess.run([ROOT / "Scripts/make-long-timeline.py", folder, "--tracks", "16", "--seconds", "300"], check=True)
            path = pathlib.Path(folder) / "edit.otio"
        sonaro.render(path, pathlib.Path(folder) / "mix.wav", report=False)
        with sonaro.open(path) as timeline:
            mix = numpy.concatenate(list(timeline.blocks(65536)), axis=1)
        count, memory = 0, []
        minutes = max(round(seconds / 60), 3)
        for minute in range(minutes):
            count += read_for(path, seconds / minutes, mix, choose)
            memory.append(get_memory())
            print(f"{(minute + 1) * seconds / minutes:6.0f} s  {count:8} reads  {memory[-1] / 2**20:.1f} MiB", flush=True)
    third = minutes // 3
    growth = max(memory[-third:]) - max(memory[third:2 * third])
    print(f"{count} reads, {growth / 2**20:+.2f} MiB from the second third to the last")
    return 1 if growth > MOST_GROWTH else 0


sys.exit(main())
