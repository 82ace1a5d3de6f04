"""What Scripts/try-allocations.py and Scripts/try-disk.py share: what they run, in which folder, and how they judge it."""
import dataclasses
import hashlib
import json
import os
import shutil
import subprocess
import zipfile

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROGRAM = os.path.join(ROOT, "build", "release", "Host", "sonaro")
GAIN = "http://lv2plug.in/plugins/eg-amp"


@dataclasses.dataclass
class Case:
    """A command of the program, with the files that it writes."""
    name: str
    words: list
    outputs: list = dataclasses.field(default_factory=list)
    # What it prints depends on the clock.
    is_timed: bool = False


def list_cases(folder):
    """Every example, and every kind of input and output. Inputs lie in folder/in; outputs go to folder/out."""
    cases = [
        Case("wave", ["render", "in/Timeline/edit.otio", "-o", "out/mix.wav", "--quiet"], ["mix.wav"]),
        Case("flac", ["render", "in/Timeline/edit.otio", "-o", "out/mix.flac", "--quiet", "--jobs", "2", "--normalize", "-16",
                      "--report", "out/report.html"], ["mix.flac", "report.html"]),
        Case("stems", ["render", "in/Timeline/edit.otio", "-o", "out", "--stems", "track", "--range", "10:00:01:00..10:00:02:00",
                       "--quiet"], None),
        Case("files", ["render", "in/Media/dialogue.flac", "in/Media/effect-bell.flac", "-o", "out/files.aiff", "--rate", "44100",
                       "--fade-in", "0.1", "--quiet"], ["files.aiff"]),
        Case("pitch", ["render", "in/Media/dialogue.flac", "-o", "out/pitch.caf", "--speed", "1.2", "--keep-pitch", "--quiet",
                       "--duration", "0.5"], ["pitch.caf"]),
        Case("denoise", ["render", "in/Media/dialogue.flac", "-o", "out/denoised.wav", "--denoise", "--duration", "1", "--quiet"],
             ["denoised.wav"]),
        Case("stream", ["render", "in/Media/dialogue.flac", "-o", "-", "--format", "wav", "--quiet"]),
        Case("binaural", ["render", "in/Timeline/edit.otio", "-o", "out/ears.wav", "--binaural", "--quiet", "--range",
                          "10:00:01:00..10:00:02:00"], ["ears.wav"]),
        Case("bundle", ["render", "in/edit.otioz", "-o", "out/bundle.wav", "--quiet"], ["bundle.wav"]),
        Case("waveform", ["waveform", "in/Timeline/edit.otio", "-o", "out/wave.png", "--quiet"], ["wave.png"]),
        Case("peaks", ["waveform", "in/Media/music.flac", "-o", "out/peaks.json", "--quiet"], ["peaks.json"]),
        Case("loudness", ["loudness", "in/Timeline/edit.otio", "--json", "-o", "out/loudness.svg"],
             ["loudness.svg"]),
        Case("graph", ["graph", "in/Timeline/edit.otio", "-o", "out/graph.svg", "--quiet"], ["graph.svg"]),
        Case("info", ["info", "in/Timeline/edit.otio", "--json"]),
        Case("plan", ["plan", "in/Timeline/edit.otio", "--pieces", "3", "-o", "out/plan.json", "--quiet"], ["plan.json"]),
        Case("piece", ["render", "--piece", "in/Plan/plan.json#2", "-o", "out/2.piece", "--quiet"], ["2.piece"]),
        Case("join", ["join", "in/Plan/plan.json", "-o", "out/joined.wav", "--quiet", "--pieces-in", "in/Plan"],
             ["joined.wav"]),
        Case("play", ["play", "in/Media/dialogue.flac", "--device", "null", "--no-ui", "--json", "--start", "5.3"], is_timed=True),
    ]
    if os.path.exists(os.path.join(folder, "in", "tone.mp4")):
        cases.append(Case("movie", ["render", "in/tone.mp4", "-o", "out/movie.wav", "--quiet"], ["movie.wav"]))
    if os.path.exists(os.path.join(folder, "in", "effects.json")):
        cases.append(Case("effect", ["render", "in/Media/dialogue.flac", "-o", "out/effect.wav", "--effect-file",
                                     "in/effects.json", "--duration", "0.5", "--quiet"], ["effect.wav"]))
    return cases


def run(words, folder, environment=None, timeout=60):
    """The exit code, the standard output and what was said beside it. A code of None where it did not end."""
    process = subprocess.Popen([PROGRAM, *words], cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, env={**os.environ, **(environment or {})})
    try:
        output, text = process.communicate(timeout=timeout)
        return process.returncode, output, text.decode(errors="replace")
    except subprocess.TimeoutExpired:
        process.kill()
        output, text = process.communicate()
        return None, output, text.decode(errors="replace")


def make_inputs(folder):
    """The examples, and what is made of them."""
    inputs = os.path.join(folder, "in")
    for name in ("Timeline", "Media"):
        shutil.copytree(os.path.join(ROOT, "Examples", name), os.path.join(inputs, name))
    for name in ("out", "tmp"):
        os.makedirs(os.path.join(folder, name))
    with open(os.path.join(inputs, "Timeline", "edit.otio"), encoding="utf-8") as file:
        text = file.read().replace("../Media/", "media/")
    with zipfile.ZipFile(os.path.join(inputs, "edit.otioz"), "w", zipfile.ZIP_DEFLATED) as bundle:
        bundle.writestr("content.otio", text)
        bundle.writestr("version.txt", "1.0.0")
        for name in sorted(os.listdir(os.path.join(inputs, "Media"))):
            bundle.write(os.path.join(inputs, "Media", name), "media/" + name, zipfile.ZIP_STORED)
    os.makedirs(os.path.join(inputs, "Plan"))
    check(run(["plan", "in/Timeline/edit.otio", "--pieces", "3", "-o", "in/Plan/plan.json", "--quiet"], folder))
    for piece in (1, 2, 3):
        check(run(["render", "--piece", f"in/Plan/plan.json#{piece}", "-o", f"in/Plan/{piece}.piece", "--quiet"], folder))
    if shutil.which("ffmpeg"):
        subprocess.run(["ffmpeg", "-loglevel", "error", "-f", "lavfi", "-i", "sine=r=48000:d=2", "-ac", "2",
                        os.path.join(inputs, "tone.mp4")], check=True, stdin=subprocess.DEVNULL)
    if run(["effects", GAIN], folder)[0] == 0:
        with open(os.path.join(inputs, "effects.json"), "w", encoding="utf-8") as file:
            json.dump({"uri": GAIN, "controls": {"gain": -6}}, file)


def check(result):
    if result[0] != 0:
        raise SystemExit(f"an input could not be made: {result[2]}")


def read_tree(folder):
    """All files by their names, with digests of their contents."""
    files = {}
    for path, _, names in os.walk(folder):
        for name in names:
            whole = os.path.join(path, name)
            with open(whole, "rb") as file:
                files[os.path.relpath(whole, folder)] = hashlib.sha256(file.read()).hexdigest()
    return files


def clear(folder):
    for name in os.listdir(folder):
        path = os.path.join(folder, name)
        shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)


def sample(count, most):
    """Numbers from 1 to count: all of them, or all of the first ones and then evenly spread ones."""
    if count <= most:
        return list(range(1, count + 1))
    first = most // 3
    step = (count - first) / (most - first)
    return list(range(1, first + 1)) + sorted({first + 1 + int(i * step) for i in range(most - first)})
