"""Sequences as an editor knows them, in plain values, whose media are files, arrays or functions.

Times are in seconds, as numbers of any kind; fractions.Fraction keeps them exact. They are brought to the nearest
sample of the sequence's rate, each for itself, so that items which meet go on meeting. Enumerations are texts.
"""
import math
import os
from dataclasses import dataclass, field
from fractions import Fraction
from typing import Any, Dict, List, Optional, Union

from . import _sonaro
from ._arrays import name_layout, take_samples
from ._errors import UsageError
from ._readable import Readable

Time = Union[int, float, Fraction]

_TICKS = 254016000000
_SHAPES = {"linear": 0, "equal-power": 1, "s-curve": 2}
_INTERPOLATIONS = {"hold": 0, "linear": 1, "smooth": 2}
_SCALES = {"linear": 0, "decibels": 1}
_RESAMPLINGS = {"exact": 0, "draft": 1, "engine": 2}
_MIXDOWNS = {"front": 1, "front-rear": 2, "front-lfe": 3, "all": 4}


def _choose(value, choices, what):
    try:
        return choices[value]
    except (KeyError, TypeError):
        raise UsageError(f"{what}: {value!r} is not valid; use {', '.join(choices)}") from None


def _fraction(value, what):
    try:
        return Fraction(value if isinstance(value, (int, Fraction)) else float(value))
    except (TypeError, ValueError, OverflowError):
        raise UsageError(f"{what}: {value!r} is not a finite number") from None


def _ticks(time, what):
    ticks = math.floor(_fraction(time, what) * _TICKS + Fraction(1, 2))
    if abs(ticks) > 360000 * _TICKS:
        raise UsageError(f"{what}: {time} seconds are out of range; use up to 100 hours")
    return ticks


def _ratio(value, what):
    """A fraction that has room in 63 bits."""
    fraction = _fraction(value, what)
    if fraction.denominator > 2**44:
        fraction = fraction.limit_denominator(2**40)
    if abs(fraction.numerator) >= 2**62:
        raise UsageError(f"{what}: {value} is out of range")
    return fraction.numerator, fraction.denominator


@dataclass
class Curve:
    """A value over time: points (time, value) or (time, value, interpolation), which is "linear", "hold" or "smooth" up
    to the next point. scale: "linear", or "decibels" for points of a gain. The times of an item's curves count from its
    start, all others from that of the sequence."""

    points: List[tuple]
    scale: str = "linear"

    def _spec(self, what):
        points = []
        for point in self.points:
            time, value, interpolation = (*point, "linear")[:3] if len(point) in (2, 3) else (None, None, None)
            points.append((_ticks(time, what), float(value), _choose(interpolation, _INTERPOLATIONS, what)))
        if not points:
            raise UsageError(f"{what}: a curve has to have a point")
        scale = _choose(self.scale, _SCALES, what)
        first = min(points)[1]
        return (10 ** (first / 20) if scale else first, points, scale)


def _parameter(value, what):
    if value is None:
        return None
    if isinstance(value, Curve):
        return value._spec(what)  # pylint: disable=protected-access
    return (float(_fraction(value, what)), [], 0)


@dataclass
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

    def _spec(self):
        if isinstance(self.samples, (str, bytes, os.PathLike)):
            return ("file", os.fsencode(self.samples), self.stream)
        if self.rate is None or not 1 <= self.rate <= 10**7:
            raise UsageError(f"media {self.name!r}: a rate of {self.rate} is out of range; use 1 to 10000000")
        if callable(self.samples):
            if not self.channels or self.frames is None or not 0 <= self.frames < 2**40:
                raise UsageError(f"media {self.name!r}: a function has to have channels and frames")
            layout = name_layout(self.layout, self.channels)
            return ("function", self.samples, float(self.rate), layout, self.name, int(self.frames))
        samples = take_samples(self.samples, f"media {self.name!r}")
        return ("array", samples, float(self.rate), name_layout(self.layout, samples.shape[0]), self.name)


@dataclass
class Fade:
    """length in seconds; shape: "linear", "equal-power" or "s-curve"."""

    length: Time
    shape: str = "linear"

    def _spec(self, what):
        return (_ticks(self.length, what), _choose(self.shape, _SHAPES, what))


def _fade(fade, what):
    if fade is None:
        return (0, 0)
    return (fade if isinstance(fade, Fade) else Fade(fade))._spec(what)  # pylint: disable=protected-access


@dataclass
class Fader:
    """A gain, linear, and a mute, which silences while it is true (a curve of it holds)."""

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
    """A piece of a recording. start: the recording's own sample that is heard first, also a fraction, before its start
    or beyond its end; channels: those that are heard, in order, from 0 on; None for all."""

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
    the one that comes in."""

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

    stages    of the master: faders and effects
    mixdown   what of 5.1 is heard in mono and stereo: "front", "front-rear", "front-lfe", "all"; None for the usual
    duration  in seconds; None for the end of the last item
    """

    tracks: List[Track] = field(default_factory=list)
    submixes: List[Submix] = field(default_factory=list)
    layout: str = "stereo"
    rate: int = 48000
    stages: List[Stage] = field(default_factory=list)
    mixdown: Optional[str] = None
    duration: Optional[Time] = None
    name: str = "sequence"

    def open(self, readers=1):
        """The sequence as it is now, for reading, as an OpenSequence; each of the readers renders beside the others.
        Raises an Error for what contradicts itself."""
        if int(self.rate) != self.rate or not 1 <= self.rate <= 768000:
            raise UsageError(f"sequence {self.name!r}: a rate of {self.rate} Hz is out of range; use 1 to 768000")
        if not 1 <= readers <= 256:
            raise UsageError(f"readers: {readers} is out of range; use 1 to 256")
        specs = _Specs()
        specs.add(self)
        frames = None
        if self.duration is not None:
            frames = math.floor(_fraction(self.duration, "duration") * int(self.rate) + Fraction(1, 2))
            if not 0 <= frames < 2**40:
                raise UsageError(f"sequence {self.name!r}: a duration of {self.duration} seconds is out of range")
        opened = _sonaro.OpenSequence(specs.sequences, specs.media, int(self.rate), frames, readers)
        return OpenSequence(opened, self)

    def read(self, start, frames, track=None):
        """The samples at once; open the sequence to read more than once."""
        with self.open() as opened:
            return opened.read(start, frames, track)


class OpenSequence(Readable):
    """A sequence that was opened. What a function of a Media raises ends a read and is raised by it."""

    def __init__(self, opened, sequence):
        super().__init__(opened, sequence.name, int(sequence.rate), opened.frames, opened.layout)
        self._track_names = tuple(track.name for track in sequence.tracks)

    def _raise_failure(self, opened):
        failure = opened.take_failure()
        if failure is not None:
            raise failure


class _Specs:
    """Sequences in plain dicts and tuples, as the module reads them; see SequenceReader."""

    def __init__(self):
        self.sequences = []
        self.media = []
        self._numbers = {}
        self._media_numbers = {}
        # Objects whose identities are remembered have to live.
        self._open = []

    def add(self, sequence):
        """The number of a sequence, after those that it nests."""
        if not isinstance(sequence, Sequence):
            raise UsageError(f"{sequence!r} is no Sequence")
        if id(sequence) in self._numbers:
            return self._numbers[id(sequence)]
        if any(sequence is other for other in self._open):
            raise UsageError(f"sequence {sequence.name!r}: it nests itself")
        self._open.append(sequence)
        names = {submix.name: number for number, submix in enumerate(sequence.submixes)}
        if len(names) < len(sequence.submixes):
            raise UsageError(f"sequence {sequence.name!r}: two submixes have one name")
        spec = {
            "name": sequence.name, "layout": str(sequence.layout),
            "tracks": [self._track(track, f"track {number}", names)
                       for number, track in enumerate(sequence.tracks, 1)],
            "submixes": [self._bus(submix, f"submix {number}", names)
                         for number, submix in enumerate(sequence.submixes, 1)],
            "stages": self._stages(sequence.stages, f"sequence {sequence.name!r}", None), "pan": None,
            "mixdown": None if sequence.mixdown is None else _choose(sequence.mixdown, _MIXDOWNS, "mixdown"),
        }
        self._open.pop()
        self.sequences.append(spec)
        self._numbers[id(sequence)] = len(self.sequences) - 1
        return self._numbers[id(sequence)]

    def _bus(self, bus, origin, names):
        what = f"{origin} {bus.name!r}"
        return {"name": bus.name, "layout": str(bus.layout), "stages": self._stages(bus.stages, what, names),
                "pan": _parameter(bus.pan, what), "mute": bool(bus.mute), "origin": origin,
                "output": -1 if bus.output is None or bus.output is True else -2 if bus.output is False
                else self._submix(bus.output, names, what)}

    def _track(self, track, origin, names):
        spec = self._bus(track, origin, names)
        what = f"{origin} {track.name!r}"
        spec["items"] = [self._item(item, f"{what}, item {number}") for number, item in enumerate(track.items, 1)]
        spec["crossfades"] = [
            (int(fade.outgoing), _ticks(fade.before, what), _ticks(fade.after, what),
             _choose(fade.outgoing_shape, _SHAPES, what), _choose(fade.incoming_shape, _SHAPES, what))
            for fade in track.crossfades]
        return spec

    @staticmethod
    def _submix(name, names, what):
        if name not in names:
            raise UsageError(f"{what}: there is no submix {name!r}")
        return names[name]

    def _item(self, item, what):
        return {"name": item.name, "start": _ticks(item.start, what), "end": _ticks(item.end, what),
                "content": self._content(item.content, what), "speed": self._speed(item.speed, what),
                "resampling": _choose(item.resampling, _RESAMPLINGS, what),
                "stages": self._stages(item.stages, what, None), "pan": _parameter(item.pan, what),
                "fade_in": _fade(item.fade_in, what), "fade_out": _fade(item.fade_out, what)}

    def _content(self, content, what):
        if isinstance(content, Clip):
            first = _fraction(content.start, what)
            whole = math.floor(first)
            return {"kind": "clip", "media": self._take_media(content.media, what), "first": whole,
                    "offset": _ratio(first - whole, what), "channels": [int(c) for c in content.channels or []]}
        if isinstance(content, Nest):
            return {"kind": "nest", "sequence": self.add(content.sequence), "start": _ticks(content.start, what)}
        if isinstance(content, Multicam):
            return {"kind": "multicam", "angles": [self.add(angle) for angle in content.angles],
                    "start": _ticks(content.start, what), "first": int(content.first_angle),
                    "cuts": [(_ticks(cut.time, what), int(cut.angle), _fade(cut.fade, what))
                             for cut in content.cuts]}
        raise UsageError(f"{what}: {content!r} is no content; use a Clip, a Nest or a Multicam")

    def _take_media(self, media, what):
        if not isinstance(media, Media):
            raise UsageError(f"{what}: {media!r} is no Media")
        if id(media) not in self._media_numbers:
            self.media.append(media._spec())  # pylint: disable=protected-access
            self._media_numbers[id(media)] = len(self.media) - 1
        return self._media_numbers[id(media)]

    @staticmethod
    def _speed(speed, what):
        if not isinstance(speed, Curve):
            return float(_fraction(speed, what))
        speed._spec(what)  # pylint: disable=protected-access
        keys = sorted(((*point, "linear")[:3] for point in speed.points), key=lambda point: point[0])
        return [(_ratio(time, what), _ratio(value, what), _choose(interpolation, _INTERPOLATIONS, what))
                for time, value, interpolation in keys]

    def _stages(self, stages, what, names):
        return [self._stage(stage, f"{what}, stage {number}", names) for number, stage in enumerate(stages, 1)]

    def _stage(self, stage, what, names):
        if isinstance(stage, Fader):
            return ("fader", _parameter(stage.gain, what), _parameter(stage.mute, what))
        if isinstance(stage, Send):
            if names is None:
                raise UsageError(f"{what}: sends stand on tracks and submixes alone")
            return ("send", self._submix(stage.to, names, what), _parameter(stage.gain, what),
                    _parameter(stage.mute, what), _parameter(stage.pan, what))
        if isinstance(stage, Effect):
            controls = [(symbol, _parameter(value, what)) for symbol, value in stage.controls.items()]
            return ("effect", stage.uri, stage.preset, controls, _parameter(stage.bypass, what))
        raise UsageError(f"{what}: {stage!r} is no stage; use a Fader, a Send or an Effect")
