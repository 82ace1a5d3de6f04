#!/usr/bin/env python3
"""Runs clang-tidy over the product's sources as a build compiles them, on all processors.

Usage: check_tidy.py CLANG_TIDY ROOT BUILD_FOLDER
"""
import concurrent.futures
import json
import os
import subprocess
import sys


def list_sources(root, build):
    """Each once: groups of sources are in the build folder, below the folder of their target."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as text:
        files = {entry["file"] for entry in json.load(text)}
    for file in sorted(files):
        base = build if file.startswith(build + os.sep) else root
        room = os.path.relpath(file, base).split(os.sep)[0]
        if room in ("Host", "Platform", "Src") and "_compiles_alone" not in file and "cmake_pch" not in file:
            yield file


def main(tidy, root, build):
    sources = list(list_sources(root, build))

    def check(file):
        command = [tidy, "-p", build, "--quiet", "--config-file=" + os.path.join(root, ".clang-tidy"), file]
        return subprocess.run(command, capture_output=True, text=True, check=False)

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as threads:
        results = list(threads.map(check, sources))
    for result in results:
        if result.returncode != 0:
            print(result.stdout + result.stderr)
    failures = sum(result.returncode != 0 for result in results)
    print(f"{len(sources)} sources or groups of them, {failures} with findings")
    return 1 if failures or not sources else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
