"""Timelines for tests, small ones and random ones, as objects for JSON."""
import random
import struct

import numpy

RATE = 48000


def write_wave(path, samples, rate):
    """A WAV of floats; samples: of the shape (channels, frames)."""
    data = numpy.ascontiguousarray(samples.T, dtype="<f4").tobytes()
    channels = samples.shape[0]
    form = struct.pack("<HHIIHH", 3, channels, rate, rate * channels * 4, channels * 4, 32)
    chunks = b"fmt " + struct.pack("<I", len(form)) + form + b"data" + struct.pack("<I", len(data)) + data
    path.write_bytes(b"RIFF" + struct.pack("<I", 4 + len(chunks)) + b"WAVE" + chunks)


def read_wave(path):
    """The samples of a WAV of floats, of the shape (channels, frames)."""
    data = path.read_bytes()
    channels, at = struct.unpack_from("<H", data, data.index(b"fmt ") + 10)[0], data.index(b"data")
    size = struct.unpack_from("<I", data, at + 4)[0]
    return numpy.frombuffer(data, "<f4", size // 4, at + 8).reshape(-1, channels).T


def write_media(folder):
    noise = numpy.random.default_rng(1)
    for name, channels, rate in (("a.wav", 1, 48000), ("b.wav", 2, 48000), ("c.wav", 2, 44100)):
        write_wave(folder / name, noise.uniform(-0.5, 0.5, (channels, 3 * rate)), rate)


def time(value, rate=1000.0):
    return {"OTIO_SCHEMA": "RationalTime.1", "value": float(value), "rate": rate}


def span(start, length, rate=1000.0):
    return {"OTIO_SCHEMA": "TimeRange.1", "start_time": time(start, rate), "duration": time(length, rate)}


def clip(name, media, start, length, **more):
    reference = {"OTIO_SCHEMA": "ExternalReference.1", "name": "", "metadata": {}, "target_url": media}
    return {"OTIO_SCHEMA": "Clip.2", "name": name, "metadata": {}, "source_range": span(start, length),
            "effects": [], "markers": [], "enabled": True, "media_references": {"DEFAULT_MEDIA": reference},
            "active_media_reference_key": "DEFAULT_MEDIA", **more}


def gap(length):
    return {"OTIO_SCHEMA": "Gap.1", "name": "", "metadata": {}, "source_range": span(0, length), "effects": [],
            "markers": [], "enabled": True}


def transition(before, after):
    return {"OTIO_SCHEMA": "Transition.1", "name": "", "metadata": {}, "transition_type": "SMPTE_Dissolve",
            "in_offset": time(before), "out_offset": time(after)}


def _settings(metadata):
    return {"sonaro": metadata} if metadata else {}


def track(name, children, **settings):
    return {"OTIO_SCHEMA": "Track.1", "name": name, "metadata": _settings(settings), "source_range": None,
            "effects": [], "markers": [], "enabled": True, "kind": "Audio", "children": children}


def stack(children, **settings):
    return {"OTIO_SCHEMA": "Stack.1", "name": "", "metadata": _settings(settings), "source_range": None,
            "effects": [], "markers": [], "enabled": True, "children": children}


def timeline(tracks, **settings):
    return {"OTIO_SCHEMA": "Timeline.1", "name": "test", "metadata": _settings(settings), "global_start_time": None,
            "tracks": stack(tracks)}


def speed(factor):
    return {"OTIO_SCHEMA": "LinearTimeWarp.1", "name": "", "metadata": {}, "effect_name": "LinearTimeWarp",
            "time_scalar": factor}


class RandomTimeline:
    """Cuts, gaps, crossfades, speeds, levels, pans, a submix and nests, of the media of write_media."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def make(self):
        tracks = [self.track(f"track {index}", 1) for index in range(self.random.randint(1, 4))]
        return timeline(tracks, layout=self.random.choice(["stereo", "stereo", "mono", "5.1"]),
                        submixes=[{"name": "bus", "gain": -3}])

    def flip(self, odds):
        return self.random.randrange(odds) == 0

    def track(self, name, depth):
        children = []
        for _ in range(self.random.randint(1, 5)):
            if children and self.flip(4) and children[-1]["OTIO_SCHEMA"] == "Clip.2":
                children.append(transition(self.random.randint(0, 20), self.random.randint(1, 20)))
                children.append(self.clip())
            elif self.flip(4):
                children.append(gap(self.random.randint(1, 200)))
            elif depth > 0 and self.flip(5):
                children.append(self.nest(depth))
            else:
                children.append(self.clip())
        return track(name, children, **self.settings(depth))

    def settings(self, depth):
        settings = {}
        if self.flip(2):
            keys = sorted(self.random.sample(range(500), 3))
            settings["gain"] = self.random.choice([-6.0, {"keyframes": [
                {"time": key / 1000, "value": self.random.uniform(-30, 6),
                 "interpolation": self.random.choice(["linear", "hold", "smooth"])} for key in keys]}])
        if self.flip(3):
            settings["pan"] = self.random.uniform(-1, 1)
        if depth == 1 and self.flip(4):
            settings["sends"] = [{"to": "bus", "gain": -6}]
        return settings

    def nest(self, depth):
        nest = stack([self.track("inner", depth - 1)])
        if self.flip(2):
            nest["effects"] = [speed(self.random.choice([0.5, 1.25, -1.0]))]
        nest["source_range"] = span(self.random.randint(0, 50), self.random.randint(50, 300))
        return nest

    def clip(self):
        name = self.random.choice(["a.wav", "b.wav", "c.wav"])
        effects = [speed(self.random.choice([0.5, 1.5, 2.0, -1.0]))] if self.flip(5) else []
        return clip(name, name, self.random.randint(50, 1000), self.random.randint(50, 400), effects=effects)
