#!/usr/bin/env python3
"""Makes the files in Tests/Fuzz/Corpus that the fuzzers begin with, where they are to be made again.

Usage: make-corpus.py SONARO [FOLDER]

SONARO is the program. Movies need ffmpeg and ears need h5py (python3-h5py). Timelines are not among them: write_otio_seeds
writes these.
"""
import io
import json
import math
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import zipfile

RATE = 8000
FRAMES = 400
GAIN = "http://lv2plug.in/plugins/eg-amp"


def write(folder, name, content):
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def make_wave(channels=1, frames=FRAMES):
    data = b"".join(struct.pack("<h", int(8000 * math.sin(i / 5))) for i in range(frames * channels))
    return (b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt "
            + struct.pack("<IHHIIHH", 16, 1, channels, RATE, 2 * channels * RATE, 2 * channels, 16)
            + b"data" + struct.pack("<I", len(data)) + data)


def make_timeline(url):
    def moment(frames):
        return {"OTIO_SCHEMA": "RationalTime.1", "value": frames, "rate": RATE}

    clip = {"OTIO_SCHEMA": "Clip.1", "name": "tone", "source_range":
            {"OTIO_SCHEMA": "TimeRange.1", "start_time": moment(0), "duration": moment(FRAMES)},
            "media_reference": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": url}}
    track = {"OTIO_SCHEMA": "Track.1", "kind": "Audio", "children": [clip]}
    return json.dumps({"OTIO_SCHEMA": "Timeline.1", "name": "edit", "tracks": {"OTIO_SCHEMA": "Stack.1", "children": [track]}})


def make_bundle(compression, names):
    archive = io.BytesIO()
    with zipfile.ZipFile(archive, "w", compression) as bundle:
        for name in names:
            content = make_timeline("media/tone.wav") if name.endswith(".otio") else make_wave() if name.endswith("wav") else "1.0.0"
            # Of one date, so that the bytes are the same again.
            bundle.writestr(zipfile.ZipInfo(name, (2026, 1, 1, 0, 0, 0)), content, compression)
    return archive.getvalue()


def make_bundles(folder):
    names = ["content.otio", "version.txt", "media/tone.wav"]
    write(folder, "stored.otioz", make_bundle(zipfile.ZIP_STORED, names))
    write(folder, "deflated.otioz", make_bundle(zipfile.ZIP_DEFLATED, names))
    write(folder, "outside.otioz", make_bundle(zipfile.ZIP_STORED, ["content.otio", "../tone.wav", "/tone.wav", "media/"]))
    write(folder, "folder.otiod", make_timeline("media/tone.wav"))


def make_sounds(folder, program):
    with tempfile.TemporaryDirectory() as scratch:
        write(scratch, "tone.wav", make_wave())
        write(scratch, "pair.wav", make_wave(2, FRAMES // 2))
        shutil.copy(os.path.join(scratch, "tone.wav"), os.path.join(folder, "tone.wav"))
        for name in ("float.wav", "tone.aiff", "tone.flac", "tone.caf"):
            source = "pair.wav" if name == "tone.flac" else "tone.wav"
            subprocess.run([program, "render", os.path.join(scratch, source), "-o", os.path.join(folder, name), "--quiet"],
                           check=True)
        for name, options in (("tone.ogg", []), ("tone.mp3", []), ("tone.w64", []), ("tone.au", [])):
            subprocess.run(["ffmpeg", "-loglevel", "error", "-y", "-i", os.path.join(scratch, "tone.wav"), *options, "-bitexact",
                            os.path.join(folder, name)], check=True, stdin=subprocess.DEVNULL)


def make_movies(folder):
    for name in ("a.mp4", "a.mov", "a.mkv", "a.avi", "a.ts", "a.wma", "a.flv", "a.m4a", "a.opus"):
        rate = {"a.flv": "11025", "a.opus": "48000", "a.ts": "48000"}.get(name, "8000")
        codec = ["-c:a", "pcm_s16le"] if name in ("a.mov", "a.avi") else []
        length = 0.1 if name == "a.ts" else 0.05
        subprocess.run(["ffmpeg", "-loglevel", "error", "-y", "-f", "lavfi", "-i", f"sine=r={rate}:d={length}", "-ac", "1", "-b:a", "192k" if name == "a.ts" else "32k",
                        *codec, "-bitexact", os.path.join(folder, name)], check=True, stdin=subprocess.DEVNULL)


def make_ears(folder):
    """Containers of two kinds. The library reads neither to its end, as it does ears that were measured: fuzz.sh adds those."""
    import h5py
    import numpy
    directions = [(azimuth, elevation, 1.2) for elevation in (-45, 0, 45) for azimuth in (0, 90, 180, 270)]
    taps = 8
    sizes = {"M": len(directions), "R": 2, "N": taps, "C": 3, "E": 1, "I": 1}
    impulses = [[[math.sin(a + r) / (1 + n) for n in range(taps)] for r in range(2)] for a, _, _ in directions]
    cartesian = {"Type": "cartesian", "Units": "metre"}
    variables = [
        ("ListenerPosition", [0, 0, 0], "IC", cartesian), ("ListenerUp", [0, 0, 1], "IC", cartesian),
        ("ListenerView", [1, 0, 0], "IC", cartesian), ("EmitterPosition", [0, 0, 0], "ECI", cartesian),
        ("ReceiverPosition", [[[0], [0.09], [0]], [[0], [-0.09], [0]]], "RCI", cartesian),
        ("SourcePosition", directions, "MC", {"Type": "spherical", "Units": "degree, degree, metre"}),
        ("Data.IR", impulses, "MRN", {}), ("Data.SamplingRate", [RATE], "I", {"Units": "hertz"}), ("Data.Delay", [0, 0], "IR", {})]

    def note(thing, values):
        for name, value in values.items():
            thing.attrs.create(name, numpy.array(value.encode(), dtype=f"S{len(value) + 1}"))

    for ending, version, isOrdered in (("early", ("earliest", "v108"), False), ("late", ("v108", "v108"), True)):
        with h5py.File(os.path.join(folder, ending + ".sofa"), "w", libver=version, track_order=isOrdered) as file:
            note(file, {"Conventions": "SOFA", "Version": "1.0", "SOFAConventions": "SimpleFreeFieldHRIR",
                        "SOFAConventionsVersion": "1.0", "DataType": "FIR", "RoomType": "free field"})
            for name, size in sizes.items():
                note(file.create_dataset(name, data=numpy.zeros(size, "f4")), {
                    "CLASS": "DIMENSION_SCALE", "NAME": f"This is a netCDF dimension but not a netCDF variable. {size:10d}"})
            for name, values, dimensions, notes in variables:
                shape = [sizes[dimension] for dimension in dimensions]
                note(file.create_dataset(name, data=numpy.asarray(values, dtype="f8").reshape(shape)), notes)


def make_plans(folder, program):
    with tempfile.TemporaryDirectory() as scratch:
        write(scratch, "tone.wav", make_wave())
        write(scratch, "edit.otio", make_timeline("tone.wav"))
        subprocess.run([program, "plan", "edit.otio", "--pieces", "2", "--block", "100", "-o", "plan.json", "--quiet", "--range",
                        "0..0.05", "--normalize", "-16"], check=True, cwd=scratch)
        with open(os.path.join(scratch, "plan.json"), encoding="utf-8") as file:
            write(folder, "plan.json", file.read().replace(scratch, "/edits"))


def make_texts(folder):
    keys = [{"time": 0, "value": -6}, {"time": 0.5, "value": 0, "interpolation": "smooth"}, {"time": 1.25, "value": 3}]
    state = "@prefix state: <http://lv2plug.in/ns/ext/state#> . <urn:x> state:state [ <urn:key> \"value\" ] ."
    effects = {
        "plain": {"uri": GAIN, "controls": {"gain": -6}},
        "moving": [{"uri": GAIN, "controls": {"gain": {"keyframes": keys}}, "bypass": True},
                   {"uri": "urn:other", "state": state, "controls": {"file": "a.wav"}}],
    }
    for name, value in effects.items():
        write(os.path.join(folder, "effects"), name + ".json", json.dumps(value))
    comments = [{"id": 1, "sample": 0, "text": "start"}, {"id": 7, "sample": 48000, "text": "\u266a louder", "by": "other"}]
    write(os.path.join(folder, "comments"), "file.json", json.dumps({"version": 1, "comments": comments}))
    write(os.path.join(folder, "comments"), "comment.json", json.dumps({"sample": 5, "text": "a word"}))


def make_requests(folder):
    host = "Host: 127.0.0.1:8750\r\n"
    body = json.dumps({"sample": 5, "text": "a word"})
    post = f"Content-Type: application/json\r\nContent-Length: {len(body)}\r\n\r\n{body}"
    requests = {
        "page": f"GET / HTTP/1.1\r\n{host}\r\n",
        "script": f"GET /main.js HTTP/1.1\r\n{host}Accept-Encoding: gzip, br\r\nIf-None-Match: \"1\", W/\"2\"\r\n\r\n",
        "part": f"GET /mix.wav?mute=1&solo=2 HTTP/1.1\r\n{host}Range: bytes=44-143\r\nIf-Range: \"x\"\r\n\r\n",
        "parts": f"GET /track/1.wav HTTP/1.1\r\n{host}Range: bytes=0-1,5-,-7\r\n\r\nHEAD /mix.wav HTTP/1.1\r\n{host}\r\n",
        "flac": f"GET /mix.flac?start=100&samples=200 HTTP/1.1\r\n{host}\r\n",
        "peaks": f"GET /peaks/mix/512.json HTTP/1.1\r\n{host}\r\nGET /peaks/1/1024.dat HTTP/1.1\r\n{host}\r\n",
        "facts": f"GET /timeline.json HTTP/1.1\r\n{host}\r\nGET /report.json HTTP/1.0\r\n{host}\r\n",
        "loudness": f"GET /loudness.json HTTP/1.1\r\n{host}Connection: close\r\n\r\n",
        "comments": f"GET /comments.json HTTP/1.1\r\n{host}\r\nGET /comments.otio HTTP/1.1\r\n{host}\r\n",
        "add": f"POST /comments HTTP/1.1\r\n{host}Origin: http://127.0.0.1:8750\r\n{post}",
        "change": f"PUT /comments/1 HTTP/1.1\r\n{host}{post}",
        "remove": f"DELETE /comments/1 HTTP/1.1\r\n{host}Content-Type: application/json\r\n\r\n",
        "chunks": f"POST /comments HTTP/1.1\r\n{host}Transfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n",
    }
    for name, text in requests.items():
        write(folder, name, text)


def main():
    program = os.path.abspath(sys.argv[1])
    folder = sys.argv[2] if len(sys.argv) > 2 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "Corpus")
    for name in ("sounds", "movies", "sofa", "plans"):
        os.makedirs(os.path.join(folder, name), exist_ok=True)
    make_bundles(os.path.join(folder, "bundles"))
    make_sounds(os.path.join(folder, "sounds"), program)
    make_movies(os.path.join(folder, "movies"))
    make_ears(os.path.join(folder, "sofa"))
    make_plans(os.path.join(folder, "plans"), program)
    make_texts(folder)
    make_requests(os.path.join(folder, "requests"))


if __name__ == "__main__":
    main()
