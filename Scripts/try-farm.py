#!/usr/bin/env python3
"""Renders random timelines in pieces and compares what is joined with what one render writes, files and reports.

Usage: try-farm.py [TIMELINES] [--first SEED] [--program PROGRAM]
       try-farm.py --kill [ROUNDS] [--first SEED] [--program PROGRAM]

Each timeline has options that are drawn, and is cut into 1, 3 and 16 pieces. With --kill, what renders a piece is killed at
a random moment, again and again, and after each time a join is tried: it has to name what is missing, or to write the
right bytes. Ends with a line of counts; the exit code is 1 where anything differs.
"""
import argparse
import json
import pathlib
import random
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "Python" / "Tests"))

from timelines import RandomTimeline, clip, stack, timeline, track, write_media  # noqa: E402 pylint: disable=all

COUNTS = (1, 3, 16)
# What differs from one run to the next.
TIMES = ("elapsedSeconds", "realTimeFactor")


class Folder:
    """A folder with media, in which the program runs."""

    def __init__(self, path, program):
        self.path = pathlib.Path(path)
        self.program = program
        write_media(self.path)

    def start(self, *arguments):
        return subprocess.Popen([self.program, *map(str, arguments)], cwd=self.path, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, text=True)

    def run(self, *arguments, codes=(0, 3)):
        done = subprocess.run([self.program, *map(str, arguments)], cwd=self.path, capture_output=True, text=True,
                              check=False)
        if done.returncode not in codes:
            raise SystemExit(f"{' '.join(map(str, arguments))}\nends with {done.returncode}: {done.stderr}")
        return done

    def read(self, name):
        return (self.path / name).read_bytes()

    def read_report(self, name):
        report = json.loads(self.read(name))
        for key in TIMES:
            report.pop(key)
        return report


def draw_options(draw):
    options = []
    if draw.random() < 0.4:
        options += [f"--normalize={draw.choice([-30, -23, -16])}"]
    elif draw.random() < 0.3:
        options += ["--gain-db=-3.5"]
    if draw.random() < 0.4:
        options += [f"--limit-dbtp={draw.choice([-12, -3, -1])}"]
    if draw.random() < 0.5:
        options += [f"--bits={draw.choice(['16', '24', '32f'])}"]
    if draw.random() < 0.3:
        options += ["--fade-in=0.05", "--fade-out=0.1"]
    if draw.random() < 0.2:
        options += [f"--rate={draw.choice([44100, 32000])}"]
    if draw.random() < 0.2:
        options += ["--binaural"]
    if draw.random() < 0.2:
        options += ["--tail=0.3"]
    if draw.random() < 0.2:
        options += ["--keep-pitch"]
    # Short blocks, so that short timelines have many pieces.
    return options + [f"--block={draw.choice([256, 512, 1000])}"]


def render_pieces(folder, count):
    for number in range(1, count + 1):
        folder.run("render", "--piece", f"plan.json#{number}", "-o", f"pieces/{number}.wav", "--quiet",
                   "--jobs", 1 + number % 2)


def compare(folder, seed):
    """Whether files and reports are the same, for each number of pieces; nothing for a timeline that cannot be rendered."""
    draw = random.Random(seed)
    (folder.path / "edit.otio").write_text(json.dumps(RandomTimeline(seed).make()))
    options = draw_options(draw)
    ending = draw.choice(["wav", "wav", "flac", "aiff"]) if "--bits=32f" not in options else "wav"
    done = folder.run("render", "edit.otio", "-o", f"one.{ending}", "--report", "one.json", *options, codes=range(4))
    if done.returncode not in (0, 3) or not (folder.path / f"one.{ending}").exists():
        return None
    results = []
    for wanted in COUNTS:
        folder.run("plan", "edit.otio", "--pieces", wanted, "-o", "plan.json", "--track-levels", "--quiet", *options)
        count = len(json.loads(folder.read("plan.json"))["pieces"])
        render_pieces(folder, count)
        folder.run("join", "plan.json", "-o", f"joined.{ending}", "--pieces-in", "pieces", "--report", "joined.json",
                   "--quiet")
        one, joined = folder.read_report("one.json"), folder.read_report("joined.json")
        one["outputs"][0].pop("path"), joined["outputs"][0].pop("path")
        same = folder.read(f"one.{ending}") == folder.read(f"joined.{ending}"), one == joined
        if same != (True, True):
            print(f"seed {seed}, {count} pieces, {options}: file {same[0]}, report {same[1]}")
        results.append((count, *same))
        for piece in (folder.path / "pieces").iterdir():
            piece.unlink()
    for name in folder.path.glob("one.*"):
        name.unlink()
    return results


def compare_all(folder, seeds):
    rows, refused = [], 0
    for seed in seeds:
        results = compare(folder, seed)
        refused += results is None
        rows += results or []
    files, reports = sum(row[1] for row in rows), sum(row[2] for row in rows)
    print(f"{len(seeds)} timelines ({refused} without a render), {len(rows)} joins of {sum(row[0] for row in rows)} pieces: "
          f"{files} files and {reports} reports the same as of one render, {len(rows) - min(files, reports)} differ")
    return files == reports == len(rows) > 0


def kill_all(folder, rounds, seed):
    """Kills what renders pieces until each of them has been rendered."""
    draw = random.Random(seed)
    tracks = [track(f"track {index}", [clip("c", "c.wav", 0, 2900) for _ in range(60)]) for index in range(4)]
    (folder.path / "edit.otio").write_text(json.dumps(timeline([stack(tracks)["children"][0], *tracks[1:]])))
    folder.run("render", "edit.otio", "-o", "one.wav", "--rate=48000", "--normalize=-20", "--quiet")
    begin = time.monotonic()
    folder.run("plan", "edit.otio", "--pieces", 3, "-o", "plan.json", "--track-levels", "--rate=48000",
               "--normalize=-20", "--quiet")
    folder.run("render", "--piece", "plan.json#1", "-o", "pieces/1.wav", "--quiet")
    longest = time.monotonic() - begin
    (folder.path / "pieces" / "1.wav").unlink()
    killed, refused, wrong = 0, 0, 0
    for _ in range(rounds):
        worker = folder.start("render", "--piece", f"plan.json#{draw.randint(1, 3)}", "-o",
                              f"pieces/{draw.randint(1, 3)}-{draw.randint(1, 2)}.wav", "--quiet")
        try:
            worker.communicate(timeout=draw.uniform(0, 3 * longest))
        except subprocess.TimeoutExpired:
            worker.kill()
            worker.communicate()
            killed += 1
        done = folder.run("join", "plan.json", "-o", "joined.wav", "--pieces-in", "pieces", "--quiet", codes=(0, 1))
        if done.returncode == 1:
            refused += 1
            wrong += "missing" not in done.stderr or (folder.path / "joined.wav").exists()
        else:
            wrong += folder.read("joined.wav") != folder.read("one.wav")
            for piece in (folder.path / "pieces").glob("*.wav"):
                piece.unlink()
            (folder.path / "joined.wav").unlink()
    print(f"{rounds} workers, {killed} of them killed: {refused} joins named what is missing, "
          f"{rounds - refused} wrote the file, {wrong} were wrong")
    return wrong == 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("count", nargs="?", type=int, default=200)
    parser.add_argument("--kill", action="store_true")
    parser.add_argument("--first", type=int, default=1)
    parser.add_argument("--program", default=str(ROOT / "build" / "release" / "Host" / "sonaro"))
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="try-farm-") as path:
        folder = Folder(path, arguments.program)
        (folder.path / "pieces").mkdir()
        if arguments.kill:
            return kill_all(folder, arguments.count, arguments.first)
        return compare_all(folder, range(arguments.first, arguments.first + arguments.count))


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
