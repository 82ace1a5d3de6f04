#!/usr/bin/env python3
"""Makes a timeline of many clips of noise, for measuring: FOLDER/edit.otio and media beside it.

    Scripts/make-long-timeline.py FOLDER [--tracks 32] [--seconds 600] [--files 16]

Each track is full of clips of 2 to 20 seconds, cut from anywhere in one of the files. The same arguments make the
same files. Needs nothing but Python.
"""

import argparse
import array
import json
import pathlib
import random
import wave

MEDIA_SECONDS = 60
SAMPLE_RATE = 48000
FRAME_RATE = 25
# Of full scale: tracks of noise add up to less than 1.
PEAK = 800


def write_noise(path, seed):
    bits = random.Random(seed).getrandbits(16 * MEDIA_SECONDS * SAMPLE_RATE)
    samples = array.array("h", bits.to_bytes(2 * MEDIA_SECONDS * SAMPLE_RATE, "little"))
    samples = array.array("h", (sample * PEAK >> 15 for sample in samples))
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, SAMPLE_RATE, 0, "NONE", ""))
        file.writeframes(samples.tobytes())


def time(frames):
    return {"OTIO_SCHEMA": "RationalTime.1", "value": float(frames), "rate": float(FRAME_RATE)}


def make_clip(generator, name, frames, files):
    start = generator.randrange(MEDIA_SECONDS * FRAME_RATE - frames)
    return {
        "OTIO_SCHEMA": "Clip.1",
        "name": name,
        "source_range": {"OTIO_SCHEMA": "TimeRange.1", "start_time": time(start), "duration": time(frames)},
        "media_reference": {
            "OTIO_SCHEMA": "ExternalReference.1",
            "target_url": f"noise-{generator.randrange(files)}.wav",
        },
    }


def make_track(index, seconds, files):
    generator = random.Random(1000 + index)
    children = []
    left = seconds * FRAME_RATE
    while left > 0:
        frames = min(generator.randrange(2 * FRAME_RATE, 20 * FRAME_RATE), left)
        children.append(make_clip(generator, f"clip {len(children) + 1}", frames, files))
        left -= frames
    return {"OTIO_SCHEMA": "Track.1", "name": f"Track {index + 1}", "kind": "Audio", "children": children}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--tracks", type=int, default=32)
    parser.add_argument("--seconds", type=int, default=600)
    parser.add_argument("--files", type=int, default=16)
    options = parser.parse_args()
    options.folder.mkdir(parents=True, exist_ok=True)
    for index in range(options.files):
        write_noise(options.folder / f"noise-{index}.wav", index)
    tracks = [make_track(index, options.seconds, options.files) for index in range(options.tracks)]
    timeline = {
        "OTIO_SCHEMA": "Timeline.1",
        "name": "long",
        "tracks": {"OTIO_SCHEMA": "Stack.1", "name": "tracks", "children": tracks},
    }
    (options.folder / "edit.otio").write_text(json.dumps(timeline), encoding="utf-8")


main()
