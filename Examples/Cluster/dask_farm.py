#!/usr/bin/env python3
"""Renders a timeline, or all timelines of a folder, by Dask distributed.

Usage: dask_farm.py TIMELINE OUTPUT [--scheduler ADDRESS | --workers N] [--media DIR] [--normalize LUFS]
       dask_farm.py FOLDER OUTPUT_FOLDER ...

Without --scheduler, a cluster of processes on this machine does it, by default one for each core.
"""
import argparse
import os
import pathlib
import sys

from distributed import Client, LocalCluster
from sonaro import Error, farm


def show(done, total, row=None):
    print(f"{done} of {total}" + (f": {row['timeline']}: {row['status']}" if row else " pieces"), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("input", type=pathlib.Path)
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("--scheduler")
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("--media", action="append")
    parser.add_argument("--normalize", type=float)
    arguments = parser.parse_args()
    options = {name: value for name in ("media", "normalize") if (value := getattr(arguments, name)) is not None}
    cluster = arguments.scheduler or LocalCluster(n_workers=arguments.workers, threads_per_worker=1,
                                                  dashboard_address=None)
    with Client(cluster) as client:
        if arguments.input.is_dir() and arguments.input.suffix != ".otiod":
            for row in farm.render_all(arguments.input, client, arguments.output, progress=show, **options):
                print(f"{row['status']:8} {row['output']}  {row['error'] or row['loudness']}")
        else:
            report = farm.render(arguments.input, arguments.output, client, progress=show, **options)
            # Of silence it is the text "-inf".
            loudness = float(report["outputs"][0]["integratedLufs"])
            print(f"{report['outputs'][0]['path']}: {loudness:.1f} LUFS")


if __name__ == "__main__":
    try:
        main()
    except (Error, OSError) as error:
        sys.exit(f"dask_farm.py: {error}")
