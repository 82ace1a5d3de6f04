#!/usr/bin/env python3
"""Measures how much faster two workers of a Dask cluster render a timeline in pieces than one, on an idle machine.

Usage: bench-farm.py [ROUNDS] [--tracks TRACKS] [--seconds SECONDS] [--rate HZ]

One and two processes of one thread each take turns; the times are the shortest of all rounds, of the whole render: plan,
pieces and join. By default all clips are resampled. Needs python3-distributed and the package in PYTHONPATH.
"""
import argparse
import pathlib
import subprocess
import sys
import tempfile
import time

from distributed import Client, LocalCluster
from sonaro import farm

MAKER = pathlib.Path(__file__).resolve().parent / "make-long-timeline.py"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("rounds", nargs="?", type=int, default=3)
    parser.add_argument("--tracks", type=int, default=32)
    parser.add_argument("--seconds", type=int, default=900)
    parser.add_argument("--rate", type=int, default=44100)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="bench-farm-") as path:
        subprocess.run([sys.executable, MAKER, path, "--tracks", str(arguments.tracks), "--seconds",
                        str(arguments.seconds)], check=True)
        edit, output = pathlib.Path(path) / "edit.otio", pathlib.Path(path) / "mix.wav"
        times = {1: [], 2: []}
        written = set()
        for _ in range(arguments.rounds):
            for workers, taken in times.items():
                with LocalCluster(n_workers=workers, threads_per_worker=1, dashboard_address=None) as cluster, \
                        Client(cluster) as client:
                    # What a worker loads at its first task is no part of it.
                    client.run(farm._get_plan, {"folder": ""})  # pylint: disable=protected-access
                    begin = time.monotonic()
                    farm.render(edit, output, client, pieces=16, report=False, rate=arguments.rate, normalize=-20)
                    taken.append(time.monotonic() - begin)
                written.add(output.read_bytes())
        one, two = min(times[1]), min(times[2])
        print(f"{arguments.tracks} tracks of {arguments.seconds} s: {one:.2f} s by one worker, {two:.2f} s by two, "
              f"{one / two:.2f} times as fast; {'the same bytes' if len(written) == 1 else 'DIFFERENT bytes'}")


if __name__ == "__main__":
    main()
