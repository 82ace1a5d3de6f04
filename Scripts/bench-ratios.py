#!/usr/bin/env python3
"""Measures how fast the engine is beside plain loops and other libraries, and compares with Benchmarks/Ratios.tsv.

Usage: bench-ratios.py BUILD_FOLDER [--record] [--rounds N] [--only WORDS]
    --record      writes the ratios as those of this version and this processor, in place of such that are there
    --rounds N    how often everything is measured (default 10)
    --only WORDS  measures ratios whose names contain it

A ratio is the time of a reference divided by the time of the engine's code, so that a larger one is faster. Everything is
measured round after round, and the ratio is that of the smallest times: what else the machine does makes times longer, never
shorter. A ratio that is more than 10 % below its record is measured again, up to fifteen rounds more, all of which
count; it fails if it stays there. Ratios hold for one processor: on another one, the last release is recorded first.
Ends with 1 for a drop, and with 2 where there is nothing to compare with.
"""
import argparse
import json
import pathlib
import platform
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
TABLE = ROOT / "Benchmarks" / "Ratios.tsv"
COLUMNS = ["version", "processor", "compiler", "ratio", "value"]
DROP = 0.10
MORE_ROUNDS = 15
# Name of the ratio, program, the benchmark of the reference, the benchmark of the engine. One that a build lacks, for
# instance for want of a peer, is left out and named.
RATIOS = [
    ("copy, 512 samples: plain loop", "benchmarks", "BM_Copy<Plain>/512", "BM_Copy<Kernel>/512"),
    ("add, 512 samples: plain loop", "benchmarks", "BM_Add<Plain>/512", "BM_Add<Kernel>/512"),
    ("scale, 512 samples: plain loop", "benchmarks", "BM_MulConstant<Plain>/512", "BM_MulConstant<Kernel>/512"),
    ("reverse, 512 samples: plain loop", "benchmarks", "BM_Reverse<Plain>/512", "BM_Reverse<Kernel>/512"),
    ("ramp, 512 samples: plain loop", "benchmarks", "BM_MulRamp<Plain>/512", "BM_MulRamp<Kernel>/512"),
    ("fold of channels: one by one", "benchmarks", "BM_KernelFold<Form::kOneByOne>", "BM_KernelFold<Form::kKernel>"),
    ("sum of channels: one by one", "benchmarks", "BM_KernelSum<Form::kOneByOne>", "BM_KernelSum<Form::kKernel>"),
    ("pull a stream: bare copies", "benchmarks", "BM_BareCopies/512", "BM_PullStream/512"),
    ("pull a stream and a clip: bare copies", "benchmarks", "BM_BareCopies/512", "BM_PullStreamAndClip/512"),
    ("track of 10000 clips: bare copies", "benchmarks", "BM_BareTrackCopies", "BM_TrackOfClips/10000"),
    ("track with stages: bare copies", "benchmarks", "BM_BareTrackCopies", "BM_TrackWithStages"),
    ("read ahead: bare copies", "benchmarks", "BM_BareStereoCopy", "BM_ReadPrefetchedAudio/0"),
    ("guarded call: call with a saved mask", "benchmarks", "BM_CallWithSavedMask", "BM_GuardedCall"),
    ("stereo panner: bare copies", "benchmarks", "BM_BareCopy/2", "BM_Panner/StereoToStereo"),
    ("moving stereo panner: bare copies", "benchmarks", "BM_BareCopy/2", "BM_Panner/StereoToStereoMoving"),
    ("exact conversion of rates: plain loop", "benchmarks",
     "BM_Resampler/exact/plainLoop/48000to44100", "BM_Resampler/exact/48000to44100"),
    ("sinc resampler: ramp in a plain loop", "benchmarks", "BM_MulRamp<Plain>/4096", "BM_Resampler/sinc/48000to44100"),
    ("binauralizer: ramp in a plain loop", "benchmarks", "BM_MulRamp<Plain>/4096", "BM_Binauralizer/48000/0"),
    ("time scaler: ramp in a plain loop", "benchmarks", "BM_MulRamp<Plain>/4096", "BM_TimeScaler/own/0.8"),
    ("FFT of 1024: ramp in a plain loop", "benchmarks", "BM_MulRamp<Plain>/4096", "BM_FFT/1024"),
    ("FFT of 1024: KISS FFT", "benchmarks", "BM_KissFFT/1024", "BM_FFT/1024"),
    ("exact conversion of rates: soxr, very high", "benchmarks",
     "BM_Resampler/soxr/veryHigh/48000to44100", "BM_Resampler/exact/48000to44100"),
    ("exact conversion of rates: libsamplerate, best", "benchmarks",
     "BM_Resampler/libsamplerate/best/48000to44100", "BM_Resampler/exact/48000to44100"),
    ("time scaler: Rubber Band R3", "benchmarks", "BM_TimeScaler/rubberband/R3/0.8", "BM_TimeScaler/own/0.8"),
    ("time scaler: SoundTouch", "benchmarks", "BM_TimeScaler/soundtouch/0.8", "BM_TimeScaler/own/0.8"),
    ("sequence of 8 tracks: plain loop", "host_benchmarks", "BM_PlainLoop/8/512", "BM_RenderSequence/8/512/1"),
    ("sequence of 32 tracks: plain loop", "host_benchmarks", "BM_PlainLoop/32/2048", "BM_RenderSequence/32/2048/1"),
    ("sequence of 128 tracks: plain loop", "host_benchmarks", "BM_PlainLoop/128/2048", "BM_RenderSequence/128/2048/1"),
    ("peaks of a minute: sequence in a plain loop", "host_benchmarks", "BM_PlainLoop/32/2048", "Generate/256/0"),
    ("LV2 amplifier: bare plugin", "host_benchmarks", "RunBare/0", "RunEffects/0"),
]
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def match(name):
    """The expression of one benchmark. Angle brackets stay, which are edges of words after a backslash."""
    return "^" + name.replace(".", "[.]") + "$"


def run_round(folder, ratios, least):
    """Runs what ratios need once, and takes over times that are smaller than those in least."""
    for program in dict.fromkeys(row[1] for row in ratios):
        names = {name for row in ratios if row[1] == program for name in row[2:]}
        command = [folder / "Benchmarks" / program, "--benchmark_format=json", "--benchmark_min_time=0.05",
                   "--benchmark_filter=" + "|".join(match(name) for name in sorted(names))]
        if not command[0].exists():
            sys.exit(f"{command[0]} does not exist: run Scripts/bench.sh, which builds it")
        result = subprocess.run(command, capture_output=True, text=True)
        if result.returncode != 0:
            sys.exit(f"{command[0]} ended with {result.returncode}: {result.stderr.strip()}")
        # Nothing is printed where this build has none of them.
        for run in json.loads(result.stdout or '{"benchmarks": []}')["benchmarks"]:
            if not run.get("error_occurred"):
                time = run["cpu_time"] * NANOSECONDS[run["time_unit"]]
                least[program, run["name"]] = min(time, least.get((program, run["name"]), time))


def compute(ratios, least):
    """The ratios that could be measured, by their names."""
    return {name: least[program, reference] / least[program, own] for name, program, reference, own in ratios
            if (program, reference) in least and (program, own) in least}


def get_version():
    return re.search(r"^\s*VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE).group(1)


def get_processor():
    info = pathlib.Path("/proc/cpuinfo")
    found = info.exists() and re.search(r"^model name\s*: (.*)$", info.read_text(), re.MULTILINE)
    return found.group(1).strip() if found else platform.machine()


def get_compiler(folder):
    for path in folder.glob("CMakeFiles/*/CMakeCXXCompiler.cmake"):
        found = dict(re.findall(r'set\(CMAKE_CXX_COMPILER_(ID|VERSION) "([^"]*)"\)', path.read_text()))
        return f"{found['ID']} {found['VERSION']}"
    sys.exit(f"{folder} is not a build folder: run Scripts/bench.sh, which makes it")


def read_table():
    if not TABLE.exists():
        return []
    rows = [line.split("\t") for line in TABLE.read_text().splitlines()]
    if rows[0] != COLUMNS or any(len(row) != len(COLUMNS) for row in rows):
        sys.exit(f"{TABLE}: each line has {len(COLUMNS)} columns, the first one their names; restore it and try again")
    return rows[1:]


def write_table(rows):
    """Under its name only when it is complete."""
    temporary = TABLE.with_suffix(".new")
    temporary.write_text("".join("\t".join(row) + "\n" for row in [COLUMNS, *rows]))
    temporary.replace(TABLE)


def parse_version(text):
    return tuple(int(part) for part in text.split("."))


def record(folder, measured):
    here = (get_version(), get_processor())
    rows = [row for row in read_table() if (row[0], row[1]) != here]
    rows += [[*here, get_compiler(folder), name, f"{value:.4g}"] for name, value in measured.items()]
    write_table(sorted(rows, key=lambda row: (parse_version(row[0]), row[1])))
    return f"{len(measured)} ratios of version {here[0]} recorded in {TABLE.relative_to(ROOT)}"


def get_recorded():
    """The version and the ratios of the last release that was recorded on this processor."""
    processor = get_processor()
    rows = [row for row in read_table() if row[1] == processor]
    if not rows:
        print(f"{TABLE.relative_to(ROOT)} has no ratios of this processor, {processor}: run Scripts/bench.sh --record "
              "in a clone of the last release, and bring its table here", file=sys.stderr)
        sys.exit(2)
    version = max((row[0] for row in rows), key=parse_version)
    return version, {row[3]: float(row[4]) for row in rows if row[0] == version}


def find_drops(measured, recorded):
    return [name for name, value in measured.items() if name in recorded and value < (1 - DROP) * recorded[name]]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--record", action="store_true")
    parser.add_argument("--rounds", type=int, default=10)
    parser.add_argument("--only", default="")
    arguments = parser.parse_args()
    if arguments.record and arguments.only:
        parser.error("--record takes all ratios: leave out --only")
    ratios = [row for row in RATIOS if arguments.only in row[0]]
    version, recorded = ("", {}) if arguments.record else get_recorded()
    least, more = {}, 0
    for _ in range(arguments.rounds):
        run_round(arguments.folder, ratios, least)
    measured = compute(ratios, least)
    while more < MORE_ROUNDS and (drops := find_drops(measured, recorded)):
        run_round(arguments.folder, [row for row in ratios if row[0] in drops], least)
        measured, more = compute(ratios, least), more + 1

    absent = [row[0] for row in ratios if row[0] not in measured]
    for name in absent:
        print(f"not measured, since this build lacks a part of it: {name}")
    for name, value in measured.items():
        was = recorded.get(name)
        print(f"{value:10.4g}  {name}" + (f"  ({version}: {was:.4g}, {100 * (value / was - 1):+.0f} %)" if was else ""))
    if arguments.record:
        print(record(arguments.folder, measured))
        return 0
    drops = find_drops(measured, recorded)
    # What was recorded and cannot be measured any more would hide a drop.
    lost = [name for name in absent if name in recorded]
    for name in drops + lost:
        print(f"FAILED: {name} is " + (f"{100 * (1 - measured[name] / recorded[name]):.0f} % slower than in {version}"
                                       if name in measured else f"recorded for {version} and not measured"))
    print(f"{len(measured)} ratios measured, {sum(name in recorded for name in measured)} compared with version {version}, "
          f"{more} rounds repeated, {len(drops)} dropped by more than 10 %, {len(lost)} lost")
    return 1 if drops or lost else 0


if __name__ == "__main__":
    sys.exit(main())
