#!/usr/bin/env python3
"""Plants includes in small trees and proves that check_includes.py finds the bad ones and no others."""
import os
import sys
import tempfile

sys.dont_write_bytecode = True
from check_includes import find_faults

# What each tree is about; its files, each with what it includes; and a part of the fault, or None.
CASES = [
    ("a node includes the engine's core", {
        "Inc/AudioRender/Core/Base.h": [], "Src/Panner/Pan.cpp": ["AudioRender/Core/Base.h"]}, None),
    ("a panner includes a component", {
        "Inc/AudioRender/Component/Fader.h": [], "Src/Panner/Pan.cpp": ["AudioRender/Component/Fader.h"]},
     "Panner does not use Component"),
    ("waveforms include reading ahead", {
        "Inc/Prefetch/Queue.h": [], "Src/Waveform/Peaks.cpp": ["Prefetch/Queue.h"]},
     "Waveform does not use Prefetch"),
    ("a companion includes the one above it", {
        "Platform/zorvaudiodsp/Inc/zorvaudiodsp/Buffer.h": [],
        "Platform/zorvcore/Src/Core.cpp": ["zorvaudiodsp/Buffer.h"]}, "zorvcore does not use zorvaudiodsp"),
    ("kernels in an .inc file", {
        "Inc/AudioRender/Core/Base.h": [],
        "Platform/zorvaccelerate/Src/Kernels.inc": ["AudioRender/Core/Base.h"]}, "zorvaccelerate does not use Core"),
    ("the host's base includes the reader of timelines", {
        "Host/Inc/SonaroHost/Otio/Reader.h": [], "Host/Src/Base/Error.cpp": ["SonaroHost/Otio/Reader.h"]},
     "Host Base does not use Host Otio"),
    ("rooms of the host that have nothing to do with each other", {
        "Host/Src/Metering/Peak.h": [], "Host/Src/Automation/Curve.cpp": ["Metering/Peak.h"]},
     "Host Automation does not use Host Metering"),
    ("a sequence uses media by a private header", {
        "Host/Src/Media/Decoder.h": [], "Host/Src/Sequence/Stage/Clip.cpp": ["Media/Decoder.h"]}, None),
    ("the library includes the command", {
        "Host/Command/Console.h": [], "Host/Src/Render/Job.cpp": ["../../Command/Console.h"]},
     "Host Render does not use top"),
    ("the program's terminal includes its options", {
        "Host/Command/Options/Range.h": [], "Host/Command/Terminal/Console.cpp": ["Options/Range.h"]},
     "Command Terminal does not use Command Options"),
    ("the engine includes a benchmark", {
        "Benchmarks/Timing.h": [], "Src/Time/Clock.cpp": ["../../Benchmarks/Timing.h"]}, "Time does not use top"),
    ("a benchmark measures the engine", {
        "Inc/Time/Clock.h": [], "Benchmarks/ClockBenchmark.cpp": ["Time/Clock.h"]}, None),
    ("a header and another's source include each other's headers", {
        "Host/Src/Media/A.h": ["Media/B.h"], "Host/Src/Media/B.h": [], "Host/Src/Media/B.cpp": ["B.h", "A.h"]},
     "circle: Host/Media/"),
    ("a name that leads nowhere", {"Src/Time/Clock.cpp": ["Time/Gone.h"]}, "nothing is found under Time/Gone.h"),
    ("a folder without a room", {"Host/Src/Attic/Old.cpp": []}, "stands in no room"),
]


def plant(root, files):
    os.makedirs(os.path.join(root, "Platform"))
    for path, included in files.items():
        os.makedirs(os.path.join(root, os.path.dirname(path)), exist_ok=True)
        with open(os.path.join(root, path), "w", encoding="utf-8") as text:
            text.writelines(f'#include "{name}"\n' for name in included)


def main():
    failures = 0
    for name, files, fault in CASES:
        with tempfile.TemporaryDirectory() as root:
            plant(root, files)
            faults = find_faults(root)[1]
        is_right = len(faults) == 1 and fault in faults[0] if fault else not faults
        if not is_right:
            failures += 1
            print(f"{name}: found {faults or 'nothing'}, not {fault or 'nothing'}")
    print(f"{len(CASES)} trees, {failures} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
