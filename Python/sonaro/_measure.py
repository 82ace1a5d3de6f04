"""loudness and waveform: what arrays, sound files and timelines look like to a meter."""
import json
import math
import os
from dataclasses import dataclass

import numpy

from . import _sonaro
from ._arrays import take_finite, take_layout, take_rate
from ._command import run
from ._errors import UsageError
from ._exit import CALLS
from ._readable import Readable
from ._sequence import Sequence
from ._timeline import open as open_timeline
from ._values import path, whole

_BLOCK_FRAMES = 65536
_TIMELINES = (b".otio", b".otioz", b".otiod")


@dataclass(frozen=True)
class LoudnessSeries:
    """The loudness over time: of the 0.4 seconds (momentary) and the 3 seconds (short_term) that end with each step of
    so many seconds, in LUFS, as arrays; -inf for silence and before the first whole window."""

    step: float
    momentary: numpy.ndarray
    short_term: numpy.ndarray

    @property
    def times(self):
        """The ends of the steps, in seconds."""
        return self.step * numpy.arange(1, len(self.momentary) + 1)


@dataclass(frozen=True)
class Waveform:
    """columns: an array of float32 of the shape (channels, columns, 3), the lowest sample, the highest and the root
    mean square of each samples_per_column samples; the last column may stand for fewer."""

    rate: int
    samples_per_column: int
    columns: numpy.ndarray

    @property
    def minima(self):
        return self.columns[:, :, 0]

    @property
    def maxima(self):
        return self.columns[:, :, 1]

    @property
    def rms(self):
        return self.columns[:, :, 2]

    @property
    def times(self):
        """Where columns begin, in seconds."""
        return self.samples_per_column / self.rate * numpy.arange(self.columns.shape[1])


def _is_path(source):
    return isinstance(source, (str, bytes, os.PathLike))


def loudness(source, rate=None, *, layout=None, base=None, cancel=None, track=None, **options):
    """Measures loudness by EBU R 128 (ITU-R BS.1770), and its range by EBU Tech 3342.

    source   an array of the shape (channels, frames) with its rate and, where channels are more than their number
             says, its layout; an open Timeline or a
             Sequence, with a track for that track alone; or what the command "sonaro
             loudness" takes: the path of a sound file, a movie or a timeline, or an object with to_json_string()
    options  of paths and objects, those of the command, such as range or start

    Returns a dict with "integratedLufs", "truePeakDbtp", "rangeLu" and the other keys of the command's --json. Levels
    of silence are -inf, and the reason stands under "problem". Of arrays and open timelines, "series" is a LoudnessSeries.

    Raises an Error.
    """
    if _is_path(source) or hasattr(source, "to_json_string"):
        if rate is not None or layout is not None or track is not None:
            raise UsageError("loudness: rate, layout and track apply only to arrays and open timelines")
        listing, _ = run("loudness", [source], {**options, "json": True, "quiet": True}, base=base, cancel=cancel)
        return _with_silence(listing["inputs"][0])
    if options or base is not None:
        raise UsageError(f"loudness: {next(iter(options), 'base')} applies only to files")
    if isinstance(source, Sequence):
        source = source.open()
    if isinstance(source, Readable):
        meter = _sonaro.LoudnessMeter(source.layout.split()[0], source.rate)
        for block in source.blocks(_BLOCK_FRAMES, track):
            meter.add(block)
    else:
        samples = take_finite(source, "loudness")
        layout = take_layout(layout, samples.shape[0], "loudness")
        meter = _sonaro.LoudnessMeter(layout, take_rate(rate, "loudness"))
        with CALLS:
            meter.add(samples)
    listing, step, series = meter.read()
    reading = json.loads(listing)["inputs"][0]
    del reading["path"]
    return {**_with_silence(reading), "series": LoudnessSeries(step, series[0], series[1])}


def _with_silence(reading):
    """JSON has no infinite numbers."""
    return {key: _with_silence(value) if isinstance(value, dict) else -math.inf if value == "-inf" else value
            for key, value in reading.items()}


def waveform(source, rate=None, *, samples_per_column=256, track=None, base=None):
    """The waveform of an array of the shape (channels, frames) with its rate, of an open Timeline or a timeline, with a
    track for that track alone, or of a sound file or a movie. Returns a Waveform, and raises an Error."""
    samples_per_column = whole(samples_per_column, "waveform: samples_per_column", 1, 2**31)
    if _is_path(source) and not path(source, "waveform").rstrip(b"/").lower().endswith(_TIMELINES):
        if track is not None:
            raise UsageError("waveform: track applies only to timelines")
        return _of_file(source, samples_per_column)
    if _is_path(source) or hasattr(source, "to_json_string"):
        with open_timeline(source, base=base) as timeline:
            return waveform(timeline, samples_per_column=samples_per_column, track=track)
    if isinstance(source, Sequence):
        source = source.open()
    if isinstance(source, Readable):
        peaks = _sonaro.PeakGatherer(source.channels, samples_per_column)
        for block in source.blocks(_BLOCK_FRAMES, track):
            peaks.add(block)
        return Waveform(source.rate, samples_per_column, peaks.finish())
    samples, rate = take_finite(source, "waveform"), take_rate(rate, "waveform")
    peaks = _sonaro.PeakGatherer(samples.shape[0], samples_per_column)
    with CALLS:
        peaks.add(samples)
    return Waveform(rate, samples_per_column, peaks.finish())


def _of_file(source, samples_per_column):
    file = path(source, "waveform")
    with CALLS:
        rate, columns = _sonaro.gather_file(file, samples_per_column)
    return Waveform(rate, samples_per_column, columns)
