#!/usr/bin/env python3
"""Runs clang-tidy over the product's sources as a build compiles them, on all processors.

Most of its time goes into headers, so what a build compiles in groups is joined to one source for each target.

Usage: check_tidy.py CLANG_TIDY ROOT BUILD_FOLDER
"""
import concurrent.futures
import json
import os
import subprocess
import sys


def list_commands(root, build):
    """The compile commands of the product, without those of tests and precompiled headers."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as text:
        commands = {entry["file"]: entry for entry in json.load(text)}
    for file, command in sorted(commands.items()):
        base = build if file.startswith(build + os.sep) else root
        room = os.path.relpath(file, base).split(os.sep)[0]
        if room in ("Host", "Platform", "Src") and "_compiles_alone" not in file and "cmake_pch" not in file:
            yield command


def join_groups(commands, folder):
    """One command for up to five groups of a target, so that no processor waits for the largest; other sources keep their own."""
    targets = {}
    for command in commands:
        target = os.path.dirname(command["file"]) if "/Unity/" in command["file"] else command["file"]
        targets.setdefault(target, []).append(command)
    groups = [target[first:first + 5] for target in targets.values() for first in range(0, len(target), 5)]
    for number, joined in enumerate(groups):
        command = dict(joined[0])
        if len(joined) > 1:
            file = os.path.join(folder, f"target_{number}.cxx")
            with open(file, "w", encoding="utf-8") as text:
                text.writelines(f'#include "{each["file"]}"\n' for each in joined)
            command["command"] = command["command"].replace(command["file"], file)
            command["file"] = file
        yield command


def main(tidy, root, build):
    folder = os.path.join(build, "tidy")
    os.makedirs(folder, exist_ok=True)
    commands = list(join_groups(list_commands(root, build), folder))
    with open(os.path.join(folder, "compile_commands.json"), "w", encoding="utf-8") as text:
        json.dump(commands, text)

    def check(command):
        line = [tidy, "-p", folder, "--quiet", "--config-file=" + os.path.join(root, ".clang-tidy"), command["file"]]
        return subprocess.run(line, capture_output=True, text=True, check=False)

    # The largest come first, so that the last ones to end are short.
    commands.sort(key=lambda command: "target_" not in command["file"])
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as threads:
        results = list(threads.map(check, commands))
    for result in results:
        if result.returncode != 0:
            print(result.stdout + result.stderr)
    failures = sum(result.returncode != 0 for result in results)
    print(f"{len(commands)} sources or targets, {failures} with findings")
    return 1 if failures or not commands else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
