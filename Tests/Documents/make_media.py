#!/usr/bin/env python3
"""Makes the files that pages of the documents use without making them. Usage: make_media.py COMMAND FOLDER"""
import array
import pathlib
import random
import shutil
import subprocess
import sys
import wave

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "Examples"
EARS = pathlib.Path("/usr/share/libmysofa/default.sofa")
# Names, and what they are rendered from with which options; in this order.
RENDERS = [
    ("voice.wav", "dialogue.flac", ["--layout", "mono"]), ("talk.wav", "dialogue.flac", []), ("talk.flac", "dialogue.flac", []),
    ("intro.wav", "effect-bell.flac", []), ("outro.wav", "effect-bell.flac", ["--reverse"]),
    ("jingle.wav", "effect-bell.flac", []), ("mix.wav", "music.flac", []), ("podcast.wav", "dialogue-reply.flac", []),
    ("stereo.wav", "music.flac", []),
    ("film51.wav", "music.flac", ["--layout", "5.1"]), ("field.wav", "music.flac", ["--layout", "ambisonic1"])]


def write_interview(path, seconds=120, rate=48000):
    """Steady noise with bursts of more of it: something long, from which noise can be learned."""
    noise = random.Random(1)
    second = [noise.gauss(0, 100) for _ in range(rate)]
    samples = array.array("h")
    for number in range(seconds):
        gain = 20 if number % 3 else 1
        samples.extend(int(gain * value) for value in second)
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(samples.tobytes())


def main():
    command, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    media = EXAMPLES / "Media"
    timeline = (EXAMPLES / "Timeline" / "edit.otio").read_text()
    # From wherever it is read, and beginning at one hour, as in the examples of the command's help.
    (folder / "edit.otio").write_text(timeline.replace("../Media", str(media)).replace("900000.0", "90000.0"))
    shutil.copy(media / "music.flac", folder)
    for name, source, options in RENDERS:
        subprocess.run([command, "render", media / source, "-o", folder / name, "--quiet", *options], check=True)
    write_interview(folder / "interview.wav")
    write_interview(folder / "noisy.wav", 5)
    if EARS.exists():
        shutil.copy(EARS, folder / "my-ears.sofa")
    if shutil.which("ffmpeg"):
        encode = ["ffmpeg", "-loglevel", "error", "-i", folder / "mix.wav"]
        subprocess.run([*encode, folder / "music.mp3"], check=True)
        subprocess.run([*encode, "-i", folder / "voice.wav", "-map", "0", "-map", "1", "-c:a", "pcm_s16le",
                        folder / "film.mov"], check=True)


main()
