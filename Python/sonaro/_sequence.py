"""Sequences as an editor knows them, in plain values, whose media are files, arrays or functions.

Times are in seconds, as numbers of any kind; fractions.Fraction keeps them exact. They are brought to the nearest
sample of the sequence's rate, each for itself, so that items which meet go on meeting. Enumerations are texts.
"""
import math
import os
import threading
import weakref
from dataclasses import dataclass, field
from fractions import Fraction
from typing import Any, Dict, List, Optional, Union

import numpy
from numpy.typing import NDArray

from . import _sonaro
from ._arrays import check_layout, take_layout, take_samples
from ._errors import UsageError
from ._exit import CALLS
from ._readable import Readable
from ._values import choose, each, flag, fraction, length, number, path, ratio, show, text, ticks, whole

Time = Union[int, float, Fraction]

_SHAPES = {"linear": 0, "equal-power": 1, "s-curve": 2}
_INTERPOLATIONS = {"hold": 0, "linear": 1, "smooth": 2}
_SCALES = {"linear": 0, "decibels": 1}
_RESAMPLINGS = {"exact": 0, "draft": 1, "engine": 2}
_MIXDOWNS = {"front": 1, "front-rear": 2, "front-lfe": 3, "all": 4}
# The lowest and the highest value: gains of up to 200 dB, also with the sign turned, and what a float can be.
_GAIN = (-1e10, 1e10)
_GAIN_DECIBELS = (-math.inf, 200)
_PAN = (0, 1)
_SWITCH = (0, 1)
_CONTROL = (-3.4e38, 3.4e38)
_LONGEST_SECONDS = 180000
_MOST_LEVELS = 64


@dataclass
class Curve:
    """A value over time: points (time, value) or (time, value, interpolation), which is "linear", "hold" or "smooth" up
    to the next point. scale: "linear", or "decibels" for points of a gain. The times of an item's curves count from its
    start, all others from that of the sequence."""

    points: List[tuple]
    scale: str = "linear"

    def _spec(self, what, limits, usual="linear"):
        points = [self._point(point, f"{what}, point {index} of the curve", limits, usual)
                  for index, point in enumerate(each(self.points, (list, tuple), f"{what}, points of the curve"), 1)]
        if not points:
            raise UsageError(f"{what}: a curve has to have a point")
        scale = choose(self.scale, _SCALES, what)
        if scale and limits != _GAIN:
            raise UsageError(f"{what}: a curve that is no gain has no decibels; use the scale linear")
        first = min(points)[1]
        return (10 ** (first / 20) if scale else first, points, scale)

    def _point(self, point, what, limits, usual):
        if len(point) not in (2, 3):
            raise UsageError(f"{what}: {show(point)} is no point; use (time, value) or (time, value, interpolation)")
        time, value, interpolation = (*point, usual)[:3]
        is_silence = self.scale == "decibels" and isinstance(value, float) and value == -math.inf
        if not is_silence:
            value = number(value, what, *(_GAIN_DECIBELS if self.scale == "decibels" else limits))
        if usual == "hold" and interpolation != "hold":
            raise UsageError(f"{what}: a switch holds its value, and cannot be {show(interpolation)}; use hold")
        return (ticks(time, what), value, choose(interpolation, _INTERPOLATIONS, what))


def _parameter(value, what, limits):
    if value is None:
        return None
    if isinstance(value, Curve):
        return value._spec(what, limits)  # pylint: disable=protected-access
    return (number(value, what, *limits), [], 0)


def _switch(value, what):
    if isinstance(value, Curve):
        return value._spec(what, _SWITCH, "hold")  # pylint: disable=protected-access
    return None if value is None else (float(flag(value, what)), [], 0)


class _Functions:
    """The functions that an opened sequence calls. It has them, and the module has weak references, so that the garbage
    collector sees circles of them."""

    # Whose function is called on a thread.
    called = threading.local()

    def __init__(self):
        self._functions = []

    def add(self, function, what, channels):
        """What the module calls instead."""
        index = len(self._functions)
        self._functions.append(function)
        owner = weakref.ref(self)
        return lambda start, frames: owner().call(index, start, frames, what, channels)

    def call(self, index, start, frames, what, channels):
        outer = getattr(self.called, "owners", ())
        self.called.owners = (*outer, self)
        try:
            samples = self._functions[index](start, frames)
        finally:
            self.called.owners = outer
        samples = take_samples(samples, what, is_row_one_channel=False)
        if samples.shape != (channels, frames):
            raise UsageError(f"{what}: the function has to return samples of the shape ({channels}, {frames}), and "
                             f"returned {samples.shape}")
        return samples

    def refuse_circle(self, name):
        if self in getattr(self.called, "owners", ()):
            raise UsageError(f"sequence {name!r}: a function of its media cannot read it; open another one for that")


@dataclass(eq=False)
class Media:
    """A recording that clips are cut from.

    samples   an array of floats of the shape (channels, frames), which stays as it is while the sequence is open; a
              function of the first frame and a number of frames, which returns such an array, the same for a frame
              whenever it is asked for it, on any thread; or the path of a sound file or a movie
    rate      samples a second, of arrays and functions
    channels, frames   of functions
    layout    the channels, where their number does not say it: "ambisonic1" for instance
    stream    of a movie, which of its streams; 0 for all
    """

    samples: Any
    rate: Optional[float] = None
    channels: Optional[int] = None
    frames: Optional[int] = None
    layout: Optional[str] = None
    name: str = "media"
    stream: int = 0

    def _spec(self, what, functions):
        what = f"{what}, media {show(self.name)}"
        name = text(self.name, f"{what}, name")
        if isinstance(self.samples, (str, bytes, os.PathLike)):
            return ("file", path(self.samples, what), whole(self.stream, f"{what}, stream", 0, 10**6))
        if self.rate is None:
            raise UsageError(f"{what}: a rate of None is out of range; use 1 to 10000000")
        rate = number(self.rate, f"{what}, rate", 1, 10**7)
        if callable(self.samples):
            if self.channels is None or self.frames is None:
                raise UsageError(f"{what}: a function has to have channels and frames")
            channels = whole(self.channels, f"{what}, channels", 1, 64)
            return ("function", functions.add(self.samples, what, channels), rate,
                    take_layout(self.layout, channels, what), name,
                    whole(self.frames, f"{what}, frames", 0, 2**40 - 1))
        samples = take_samples(self.samples, what)
        return ("array", samples, rate, take_layout(self.layout, samples.shape[0], what), name)


@dataclass
class Fade:
    """length in seconds; shape: "linear", "equal-power" or "s-curve"."""

    length: Time
    shape: str = "linear"

    def _spec(self, what):
        return (length(self.length, what), choose(self.shape, _SHAPES, what))


def _fade(fade, what):
    if fade is None:
        return (0, 0)
    return (fade if isinstance(fade, Fade) else Fade(fade))._spec(what)  # pylint: disable=protected-access


@dataclass
class Fader:
    """A gain, linear, and a mute, which silences while it is true. Points of a curve of it hold."""

    gain: Union[float, Curve] = 1.0
    mute: Union[bool, Curve, None] = None


@dataclass
class Send:
    """Taps the sound at this place towards a submix, by its name. pan: 0 (left) through 0.5 to 1 (right), where the
    submix can be panned to."""

    to: str
    gain: Union[float, Curve] = 1.0
    pan: Union[float, Curve, None] = None
    mute: Union[bool, Curve, None] = None


@dataclass
class Effect:
    """An LV2 plugin by its URI, with the values of its controls by their symbols."""

    uri: str
    controls: Dict[str, Union[float, Curve]] = field(default_factory=dict)
    preset: str = ""
    bypass: Union[bool, Curve, None] = None


Stage = Union[Fader, Send, Effect]


@dataclass
class Clip:
    """A piece of a recording. start: the recording's own sample that is heard first, before its start or beyond its end
    as well, and a fraction where it is converted to another rate or speed (elsewhere it is rounded); channels: those that are heard, in order, from 0 on; None for all."""

    media: Media
    start: Time = 0
    channels: Optional[List[int]] = None


@dataclass
class Nest:
    """A stretch of another sequence, from a time of it on."""

    sequence: "Sequence"
    start: Time = 0


@dataclass
class Cut:
    """To another angle of a Multicam, by its index, at a time of the angles; with a fade, the angle before goes out under
    the one that comes in. At the angles' time 0 there is none before, and no fade."""

    time: Time
    angle: int
    fade: Union[Fade, Time, None] = None


@dataclass
class Multicam:
    """Sequences of one layout that run side by side, one of which is heard at a time."""

    angles: List["Sequence"]
    cuts: List[Cut] = field(default_factory=list)
    start: Time = 0
    first_angle: int = 0


@dataclass
class Item:
    """What stands on a track from start to end. Items are in the order of time and do not overlap.

    speed       of the content, with the pitch: 2 is twice as fast, below 0 backwards; or a Curve of it over the item
    resampling  of content at another rate or speed: "exact", "draft" or "engine"
    stages      what the sound passes through, one after the other; no sends
    pan         after them, 0 (left) to 1 (right)
    fade_in, fade_out   a Fade, or seconds of a linear one
    """

    content: Union[Clip, Nest, Multicam]
    start: Time
    end: Time
    name: str = ""
    speed: Union[float, Curve] = 1.0
    resampling: str = "exact"
    stages: List[Stage] = field(default_factory=list)
    pan: Union[float, Curve, None] = None
    fade_in: Union[Fade, Time, None] = None
    fade_out: Union[Fade, Time, None] = None


@dataclass
class Crossfade:
    """Around the cut between the item of that index and the next one, which follows without a gap: how far it reaches to
    either side. Both items go on under it."""

    outgoing: int
    before: Time
    after: Time
    outgoing_shape: str = "linear"
    incoming_shape: str = "linear"


@dataclass
class Track:
    """output: None for the master, the name of a submix, or False for a track that is heard through its sends alone.
    layout: of the items' sound on it."""

    items: List[Item] = field(default_factory=list)
    name: str = ""
    layout: str = "stereo"
    crossfades: List[Crossfade] = field(default_factory=list)
    stages: List[Stage] = field(default_factory=list)
    pan: Union[float, Curve, None] = None
    mute: bool = False
    output: Union[str, bool, None] = None


@dataclass
class Submix:
    """Where tracks and sends come together; the rest as of a Track."""

    name: str
    layout: str = "stereo"
    stages: List[Stage] = field(default_factory=list)
    pan: Union[float, Curve, None] = None
    mute: bool = False
    output: Union[str, bool, None] = None


@dataclass
class Sequence:
    """Tracks and submixes, mixed into a master of a layout and a rate. Nested sequences take the rate of the outermost.
    A nested sequence is heard as long as its item, and only the duration of the outermost counts.

    stages    of the master: faders and effects
    mixdown   what of 5.1 is heard in mono and stereo: "front", "front-rear", "front-lfe", "all"; None for the usual
    duration  of the outermost, in seconds, up to 50 hours; None for the end of the last item
    """

    tracks: List[Track] = field(default_factory=list)
    submixes: List[Submix] = field(default_factory=list)
    layout: str = "stereo"
    rate: int = 48000
    stages: List[Stage] = field(default_factory=list)
    mixdown: Optional[str] = None
    duration: Optional[Time] = None
    name: str = "sequence"

    def open(self, readers: int = 1) -> "OpenSequence":
        """The sequence as it is now, for reading, as an OpenSequence; each of the readers renders beside the others.
        Raises an Error for what contradicts itself."""
        what = f"sequence {show(self.name)}"
        rate = whole(self.rate, f"{what}, rate", 1, 768000)
        readers = whole(readers, "readers", 1, 256)
        frames = None
        if self.duration is not None:
            number(self.duration, f"{what}, duration", 0, _LONGEST_SECONDS)
            frames = math.floor(fraction(self.duration, what) * rate + Fraction(1, 2))
        specs = _Specs()
        specs.add(self)
        with CALLS:
            opened = _sonaro.OpenSequence(specs.sequences, specs.media, rate, frames, readers)
        return OpenSequence(opened, self, specs.functions)

    def read(self, start: int, frames: int, track: Any = None) -> "NDArray[numpy.float32]":
        """The samples at once; open the sequence to read more than once."""
        with self.open() as opened:
            return opened.read(start, frames, track)


class OpenSequence(Readable):
    """A sequence that was opened. What a function of a Media raises ends a read and is raised by it. Such a function
    cannot read the sequence that it stands in."""

    def __init__(self, opened, sequence, functions):
        super().__init__(opened, sequence.name, int(sequence.rate), opened.frames, opened.layout)
        self._functions = functions
        self._track_names = tuple(track.name for track in sequence.tracks)

    def _get(self):
        self._functions.refuse_circle(self.name)
        return super()._get()

    def _raise_failure(self, opened):
        failure = opened.take_failure()
        if failure is not None:
            raise failure


class _Specs:
    """Sequences in plain dicts and tuples, as the module reads them; see SequenceReader."""

    def __init__(self):
        self.sequences = []
        self.media = []
        self.functions = _Functions()
        self._numbers = {}
        self._media_numbers = {}
        # Objects whose identities are remembered have to live.
        self._open = []

    def add(self, sequence, where=""):
        """The number of a sequence, after those that it nests. where: the way to it, as "track 2, item 1, "; it makes the
        origins of tracks differ between sequences, by which the engine leaves out tracks."""
        if not isinstance(sequence, Sequence):
            raise UsageError(f"{where}{show(sequence)} is no Sequence")
        if id(sequence) in self._numbers:
            return self._numbers[id(sequence)]
        what = f"{where}sequence {show(sequence.name)}"
        if any(sequence is other for other in self._open):
            raise UsageError(f"{what}: it nests itself")
        if len(self._open) > _MOST_LEVELS:
            raise UsageError(f"sequence {show(sequence.name)}: sequences are nested deeper than {_MOST_LEVELS} levels; remove levels, or render "
                             "the inner ones to separate files")
        self._open.append(sequence)
        spec = self._sequence(sequence, where, what)
        self._open.pop()
        self.sequences.append(spec)
        self._numbers[id(sequence)] = len(self.sequences) - 1
        return self._numbers[id(sequence)]

    def _sequence(self, sequence, where, what):
        submixes = each(sequence.submixes, Submix, f"{what}, submixes")
        tracks = each(sequence.tracks, Track, f"{what}, tracks")
        names = {text(submix.name, f"{what}, name of a submix"): index for index, submix in enumerate(submixes)}
        if len(names) < len(submixes):
            raise UsageError(f"{what}: two submixes have one name")
        return {
            "name": text(sequence.name, f"{what}, name"), "layout": check_layout(sequence.layout, what),
            "tracks": [self._track(track, f"{where}track {index}", names) for index, track in enumerate(tracks, 1)],
            "submixes": [self._bus(submix, f"{where}submix {index}", _call(f"{where}submix {index}", submix.name), names)
                         for index, submix in enumerate(submixes, 1)],
            "stages": self._stages(sequence.stages, what, None), "pan": None,
            "mixdown": None if sequence.mixdown is None else choose(sequence.mixdown, _MIXDOWNS, f"{what}, mixdown"),
        }

    def _bus(self, bus, origin, what, names):
        return {"name": text(bus.name, f"{origin}, name"), "layout": check_layout(bus.layout, what),
                "stages": self._stages(bus.stages, what, names), "pan": _parameter(bus.pan, f"{what}, pan", _PAN),
                "mute": flag(bus.mute, f"{what}, mute"), "origin": origin,
                "output": -1 if bus.output is None or bus.output is True else -2 if bus.output is False
                else self._submix(bus.output, names, what)}

    def _track(self, track, origin, names):
        what = _call(origin, track.name)
        spec = self._bus(track, origin, what, names)
        spec["items"] = [self._item(item, f"{origin}, item {index}", f"{what}, item {index}")
                         for index, item in enumerate(each(track.items, Item, f"{what}, items"), 1)]
        spec["crossfades"] = [
            self._crossfade(fade, f"{what}, crossfade {index}")
            for index, fade in enumerate(each(track.crossfades, Crossfade, f"{what}, crossfades"), 1)]
        return spec

    @staticmethod
    def _crossfade(fade, what):
        return (whole(fade.outgoing, f"{what}, outgoing", 0, 2**31), length(fade.before, what),
                length(fade.after, what), choose(fade.outgoing_shape, _SHAPES, what),
                choose(fade.incoming_shape, _SHAPES, what))

    @staticmethod
    def _submix(name, names, what):
        number_of = names.get(text(name, f"{what}, name of a submix"))
        if number_of is None:
            raise UsageError(f"{what}: there is no submix {show(name)}")
        return number_of

    def _item(self, item, origin, what):
        return {"name": text(item.name, f"{what}, name"), "origin": origin,
                "start": ticks(item.start, f"{what}, start"), "end": ticks(item.end, f"{what}, end"),
                "content": self._content(item.content, origin, what), "speed": self._speed(item.speed, f"{what}, speed"),
                "resampling": choose(item.resampling, _RESAMPLINGS, what),
                "stages": self._stages(item.stages, what, None), "pan": _parameter(item.pan, f"{what}, pan", _PAN),
                "fade_in": _fade(item.fade_in, f"{what}, fade_in"),
                "fade_out": _fade(item.fade_out, f"{what}, fade_out")}

    def _content(self, content, origin, what):
        if isinstance(content, Clip):
            first = fraction(content.start, f"{what}, start of the clip")
            start = whole(math.floor(first), f"{what}, start of the clip", -2**52, 2**52)
            channels = each([] if content.channels is None else content.channels, object, f"{what}, channels")
            return {"kind": "clip", "media": self._take_media(content.media, what), "first": start,
                    "offset": ratio(first - start, what),
                    "channels": [whole(channel, f"{what}, channels", 0, 63) for channel in channels]}
        if isinstance(content, Nest):
            return {"kind": "nest", "sequence": self.add(content.sequence, f"{origin}, "),
                    "start": ticks(content.start, f"{what}, start of the nest")}
        if isinstance(content, Multicam):
            return self._multicam(content, origin, what)
        raise UsageError(f"{what}: {show(content)} is no content; use a Clip, a Nest or a Multicam")

    def _multicam(self, content, origin, what):
        angles = each(content.angles, Sequence, f"{what}, angles")
        cuts = each(content.cuts, Cut, f"{what}, cuts")
        return {"kind": "multicam",
                "angles": [self.add(angle, f"{origin}, angle {index}, ") for index, angle in enumerate(angles)],
                "start": ticks(content.start, f"{what}, start of the angles"),
                "first": whole(content.first_angle, f"{what}, first_angle", 0, 2**31),
                "cuts": [(ticks(cut.time, f"{what}, time of cut {index}"),
                          whole(cut.angle, f"{what}, angle of cut {index}", 0, 2**31),
                          _fade(cut.fade, f"{what}, fade of cut {index}")) for index, cut in enumerate(cuts, 1)]}

    def _take_media(self, media, what):
        if not isinstance(media, Media):
            raise UsageError(f"{what}: {show(media)} is no Media")
        if id(media) not in self._media_numbers:
            self.media.append(media._spec(what, self.functions))  # pylint: disable=protected-access
            self._media_numbers[id(media)] = len(self.media) - 1
        return self._media_numbers[id(media)]

    @staticmethod
    def _speed(speed, what):
        if not isinstance(speed, Curve):
            return number(speed, what)
        speed._spec(what, _CONTROL)  # pylint: disable=protected-access
        points = [(*point, "linear")[:3] for point in speed.points]
        keys = [(ratio(time, what), ratio(value, what), choose(interpolation, _INTERPOLATIONS, what))
                for time, value, interpolation in points]
        keys.sort(key=lambda key: Fraction(*key[0]))
        if len({key[0] for key in keys}) < len(keys):
            raise UsageError(f"{what}: two points of the curve are at one time; move one of them")
        return keys

    def _stages(self, stages, what, names):
        return [self._stage(stage, f"{what}, stage {index}", names)
                for index, stage in enumerate(each(stages, object, f"{what}, stages"), 1)]

    def _stage(self, stage, what, names):
        if isinstance(stage, Fader):
            return ("fader", _parameter(stage.gain, what, _GAIN), _switch(stage.mute, f"{what}, mute"))
        if isinstance(stage, Send):
            if names is None:
                raise UsageError(f"{what}: sends stand on tracks and submixes alone")
            return ("send", self._submix(stage.to, names, what), _parameter(stage.gain, what, _GAIN),
                    _switch(stage.mute, f"{what}, mute"), _parameter(stage.pan, f"{what}, pan", _PAN))
        if isinstance(stage, Effect):
            return self._effect(stage, what)
        raise UsageError(f"{what}: {show(stage)} is no stage; use a Fader, a Send or an Effect")

    @staticmethod
    def _effect(stage, what):
        if not isinstance(stage.controls, dict):
            raise UsageError(f"{what}: {show(stage.controls)} is no dict of controls")
        controls = [(text(symbol, f"{what}, name of a control"), _parameter(value, f"{what}, {show(symbol)}", _CONTROL))
                    for symbol, value in stage.controls.items() if value is not None]
        return ("effect", text(stage.uri, f"{what}, uri"), text(stage.preset, f"{what}, preset"), controls,
                _switch(stage.bypass, f"{what}, bypass"), text(what, what))


def _call(origin, name):
    """A track or a submix for messages."""
    return f"{origin} {show(name)}" if name else origin
