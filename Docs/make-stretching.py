#!/usr/bin/env python3
"""Writes the tables of Docs/stretching.md, or makes the sounds that it links.

Usage: make-stretching.py tables STRETCH_QUALITY   measures, which takes a few minutes, and replaces the tables
       make-stretching.py sounds SONARO FOLDER     makes the sounds as FLAC files, by the program "sonaro"
"""
import math
import random
import re
import struct
import subprocess
import sys
import tempfile
import wave
from pathlib import Path

RATE = 44100
SECONDS = 3.0
ENGINES = ("omega", "scaler")
SPEEDS = (0.8, 1.25)


def make_tables(program):
    page = Path(__file__).parent / "stretching.md"
    text = page.read_text()
    printed = subprocess.run([program], check=True, capture_output=True, text=True).stdout
    for name, table in zip(("purity", "others"), printed.strip().split("\n\n"), strict=True):
        pattern = rf"(<!-- {name} -->\n).*?(<!-- end of {name} -->)"
        if not re.search(pattern, text, re.S):
            sys.exit(f"{page} has no place for the table of {name}")
        text = re.sub(pattern, lambda match: match[1] + table + "\n" + match[2], text, flags=re.S)
    page.write_text(text)


def tone(time):
    return 0.5 * math.sin(2 * math.pi * 440 * time)


def chord(time):
    return sum(0.2 * math.sin(2 * math.pi * note * time) for note in (261.626, 329.628, 391.995, 523.251))


def drums(time, noise=random.Random(1)):
    """A bass drum on each beat, a snare on each second one and a hi-hat on each half, at 120 beats a minute."""
    beat = time % 0.5
    kick = math.exp(-9 * beat) * math.sin(2 * math.pi * (45 * beat - 6 * math.exp(-30 * beat)))
    since = (time - 0.5) % 1.0
    snare = math.exp(-18 * since) * noise.uniform(-0.5, 0.5) if time >= 0.5 else 0.0
    hat = math.exp(-90 * (time % 0.25)) * noise.uniform(-0.25, 0.25)
    return 0.7 * kick + snare + hat


class Voice:
    """Pulses at a moving pitch and noise, through three resonances that move, syllable by syllable."""

    def __init__(self):
        self.noise = random.Random(2)
        self.phase = 0.0
        self.states = [[0.0, 0.0] for _ in range(3)]

    def __call__(self, time):
        syllable = time % 0.22 / 0.22
        voiced = syllable > 0.22
        self.phase += (120 + 25 * math.sin(4.4 * time) + 10 * math.sin(18.2 * time)) / RATE
        pulse = self.phase >= 1
        self.phase -= pulse
        level = math.sin(math.pi * (syllable - 0.22) / 0.78) if voiced else 0.3
        value = level * (pulse if voiced else 0.15 * self.noise.uniform(-1, 1))
        centres = (500 + 250 * math.sin(8.2 * time), 1500 + 600 * math.sin(11.9 * time + 1), 2600 if voiced else 5200)
        radius = math.exp(-math.pi * 90 / RATE)
        for centre, state in zip(centres, self.states):
            following = value + 2 * radius * math.cos(2 * math.pi * centre / RATE) * state[0] - radius**2 * state[1]
            state[:] = following, state[0]
        return 0.02 * sum(gain * state[0] for gain, state in zip((1, 0.6, 0.35), self.states))


def write_wave(path, sample_at):
    samples = [max(-1.0, min(1.0, sample_at(i / RATE))) for i in range(int(SECONDS * RATE))]
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", ""))
        file.writeframes(b"".join(struct.pack("<h", round(32767 * sample)) for sample in samples))


def make_sounds(sonaro, folder):
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)

    def render(source, name, *options):
        subprocess.run([sonaro, "render", str(source), "-o", str(folder / f"{name}.flac"), "--bits", "16",
                        "--quiet", *options], check=True)

    with tempfile.TemporaryDirectory() as temporary:
        for name, sample_at in (("tone", tone), ("chord", chord), ("drums", drums), ("speech", Voice())):
            source = Path(temporary) / f"{name}.wav"
            write_wave(source, sample_at)
            render(source, name)
            for engine in ENGINES:
                for speed in SPEEDS:
                    render(source, f"{name}-{engine}-{speed}", "--speed", str(speed), "--keep-pitch",
                           "--stretch", engine)


if sys.argv[1:2] == ["tables"] and len(sys.argv) == 3:
    make_tables(sys.argv[2])
elif sys.argv[1:2] == ["sounds"] and len(sys.argv) == 4:
    make_sounds(sys.argv[2], sys.argv[3])
else:
    sys.exit(__doc__)
