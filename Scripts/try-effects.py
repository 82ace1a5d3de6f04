#!/usr/bin/env python3
"""Sends an impulse, a sweep and noise through installed LV2 plugins and checks what comes out.

Usage: try-effects.py [COUNT [FIRST]] [--program PROGRAM] [--verbose]

The first COUNT plugins that "sonaro effects" lists, by default 100, each with as many channels as it has inputs:
  fault      it crashes, gives samples that are not finite, or the program itself ends otherwise than it should
  late       bypassed, what comes out is not what went in, sample for sample; or, for a plugin that states a latency,
             its sound correlates with the input more at another place than at its own
  differs    a second run gives other samples
Plugins whose outputs are not as many as their inputs are left out. The plugins that give the same samples in blocks of
64, 1000 and 4096 are counted; --verbose lists all others. Ends with a line of counts, and with exit code 1 for any
fault of the program, or for a bypass of the program that is late.
"""
import argparse
import json
import math
import os
import random
import struct
import subprocess
import sys
import tempfile

RATE = 48000
FRAMES = RATE
NOISE_START, NOISE_FRAMES = 40000, 2048
# The lags at which a sound is looked for, in frames.
MOST_LAG = 400


def make_input():
    """An impulse, a sweep from 50 Hz to 15 kHz, a burst of noise, and silence after it."""
    samples = [0.0] * FRAMES
    samples[2400] = 0.5
    octaves = math.log(300.0)
    length = 28800
    for i in range(length):
        phase = 2 * math.pi * 50 * (length / RATE) / octaves * (math.exp(i / length * octaves) - 1)
        samples[9600 + i] = 0.3 * math.sin(phase)
    noise = random.Random(1)
    for i in range(NOISE_FRAMES):
        samples[NOISE_START + i] = noise.uniform(-0.3, 0.3)
    return [struct.unpack("<f", struct.pack("<f", sample))[0] for sample in samples]


def write_wav(path, samples, channels):
    data = b"".join(struct.pack("<f", sample) * channels for sample in samples)
    with open(path, "wb") as file:
        file.write(b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt "
                   + struct.pack("<IHHIIHH", 16, 3, channels, RATE, RATE * 4 * channels, 4 * channels, 32)
                   + b"data" + struct.pack("<I", len(data)) + data)


def read_samples(path):
    """The bytes of a WAV's samples."""
    with open(path, "rb") as file:
        content = file.read()
    at = 12
    while at + 8 <= len(content):
        size = struct.unpack_from("<I", content, at + 4)[0]
        if content[at:at + 4] == b"data":
            return content[at + 8:at + 8 + size]
        at += 8 + size + size % 2
    return b""


def find_lag(samples, reference):
    """Where the noise of the reference is found best: how many frames late, and whether it is found at all."""
    noise = reference[NOISE_START:NOISE_START + NOISE_FRAMES]
    power = sum(value * value for value in noise)

    def correlate(lag):
        part = samples[NOISE_START + lag:NOISE_START + lag + NOISE_FRAMES]
        energy = sum(value * value for value in part)
        product = sum(a * b for a, b in zip(noise, part))
        return abs(product) / math.sqrt(power * energy) if energy > 0 else 0.0
    best = max(range(-MOST_LAG, MOST_LAG + 1), key=lambda lag: (correlate(lag), -abs(lag)))
    return best, correlate(best)


class Trial:
    def __init__(self, program, folder, effect, reference):
        self.program, self.folder, self.effect, self.reference = program, folder, effect, reference
        self.input = os.path.join(folder, f"in{effect['inputs']}.wav")
        if not os.path.exists(self.input):
            write_wav(self.input, reference, effect["inputs"])

    def render(self, block, bypass=False):
        """The bytes of the samples, or the message of a failure; and the summary."""
        output = os.path.join(self.folder, "out.wav")
        chain = os.path.join(self.folder, "chain.json")
        with open(chain, "w", encoding="utf-8") as file:
            json.dump([{"uri": self.effect["uri"], "bypass": bypass}], file)
        command = [self.program, "render", self.input, "-o", output, "--effect-file", chain, "--block", str(block),
                   "--layout", str(self.effect["inputs"]) if self.effect["inputs"] > 2 else
                   ("mono", "stereo")[self.effect["inputs"] - 1], "--json"]
        try:
            result = subprocess.run(command, capture_output=True, timeout=120, check=False)
        except subprocess.TimeoutExpired:
            return None, "does not end within two minutes", True
        if result.returncode != 0:
            message = result.stderr.decode(errors="replace").strip()
            named = result.returncode == 1 and "the effect " in message or "the plugin " in message
            return None, message or f"ended with {result.returncode}", not named
        return read_samples(output), json.loads(result.stdout), False

    def run(self):
        """Findings as pairs of a kind and a text."""
        whole, summary, is_ours = self.render(4096)
        if whole is None:
            return [("ours" if is_ours else "fault", summary)]
        findings = []
        if self.render(4096)[0] != whole:
            findings.append(("differs", "a second run gives other samples"))
        elif any(self.render(block)[0] != whole for block in (64, 1000)):
            findings.append(("blocks", "the samples depend on the blocks"))
        expected = b"".join(struct.pack("<f", sample) * self.effect["inputs"] for sample in self.reference)
        bypassed, about, is_ours = self.render(4096, True)
        latency = summary["effects"][0]["latencySamples"]
        if bypassed is None:
            findings.append(("ours" if is_ours else "fault", about))
        elif bypassed != expected:
            own = about["effects"][0]["hasOwnBypass"]
            findings.append(("own bypass" if own else "late",
                             "its own bypass changes the samples" if own else "bypassed, it is not what went in"))
        if latency > 0:
            channels = self.effect["inputs"]
            samples = struct.unpack(f"<{len(whole) // 4}f", whole)[::channels]
            lag, found = find_lag(samples, self.reference)
            if lag != 0 and found > 0.5:
                findings.append(("shifted", f"states {latency} samples and is {lag} late ({found:.2f})"))
        return findings


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("count", nargs="?", type=int, default=100)
    parser.add_argument("first", nargs="?", type=int, default=0)
    parser.add_argument("--program", default=os.path.join(os.path.dirname(os.path.abspath(__file__)),
                                                          "../build/release/Host/sonaro"))
    parser.add_argument("--verbose", action="store_true")
    options = parser.parse_args()
    listing = subprocess.run([options.program, "effects", "--json"], capture_output=True, check=True)
    effects = json.loads(listing.stdout)[options.first:options.first + options.count]
    counts = dict.fromkeys(("left out", "clean", "fault", "ours", "late", "shifted", "differs", "blocks", "own bypass"), 0)
    reference = make_input()
    with tempfile.TemporaryDirectory() as folder:
        for effect in effects:
            if effect["inputs"] != effect["outputs"]:
                counts["left out"] += 1
                continue
            findings = Trial(options.program, folder, effect, reference).run()
            counts["clean"] += not findings
            for kind, text in findings:
                counts[kind] += 1
                if options.verbose or kind not in ("blocks", "differs", "own bypass"):
                    print(f"{kind}: {effect['name']} <{effect['uri']}>: {text}", flush=True)
    print(f"{len(effects)} plugins: " + ", ".join(f"{count} {kind}" for kind, count in counts.items()))
    return 1 if counts["ours"] + counts["late"] else 0


if __name__ == "__main__":
    sys.exit(main())
