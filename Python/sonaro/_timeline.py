"""open: a timeline as an array that is rendered where it is read."""
import json
import os
from dataclasses import dataclass
from typing import Optional

from . import _sonaro
from ._errors import UsageError
from ._options import make_arguments, take_input


@dataclass(frozen=True)
class Note:
    """Something about a timeline that its author should know. kind: "remark", "guess", "ignored", "level not read" or
    "missing effect"; place: a JSON pointer."""

    kind: str
    place: str
    text: str
    clip: Optional[str] = None
    track: Optional[str] = None


@dataclass(frozen=True)
class TrackInfo:
    """A track of the timeline itself. number: from 1 on, as read takes it; reason: why it is not heard."""

    number: int
    name: str
    layout: str
    is_heard: bool
    reason: Optional[str]
    place: str


class Timeline:
    """A timeline that was opened. Close it, or use it in a with statement, to free its media.

    duration  in seconds; frames, its samples in each channel
    rate      samples a second
    layout    the channels: "mono", "stereo", "5.1", "ambisonic1" ...; channels, their number
    tracks    the outermost tracks, as TrackInfo, from the bottom up
    notes     what was guessed, ignored or remarked, as Note
    clips, markers, missing   as the report of render lists them

    Threads: any; as many read at once as open was asked for.
    """

    def __init__(self, opened):
        self._opened = opened
        facts = json.loads(opened.describe())
        programme = facts["programme"]
        self.name = facts["name"]
        self.rate = programme["rate"]
        self.frames = programme["samples"]
        self.duration = self.frames / self.rate
        self.layout = programme["layout"]
        self.channels = opened.channels
        self.tracks = tuple(TrackInfo(number, row["name"], row["layout"], row["isHeard"], row.get("reason"), row["place"])
                            for number, row in enumerate(facts["tracks"], 1))
        self.notes = tuple(Note(**note) for note in facts["notes"])
        self.clips = facts["clips"]
        self.markers = facts["markers"]
        self.missing = facts["missing"]

    def read(self, start, frames, track=None):
        """The samples from start on as an array of float32 of the shape (channels, frames), those of the file that
        render writes: any place in any order gives the same bits. Outside of the timeline is silence.

        track: the name or number of an outermost track that is heard alone, through the mix; None for all. Raises an
        Error, and a UsageError for a track that does not exist.
        """
        start, frames = int(start), int(frames)
        if frames < 0 or abs(start) > 2**52 or frames > 2**40:
            raise UsageError(f"read: {frames} samples from {start} on are no range")
        return self._get().read(start, frames, 0 if track is None else self._number(track))

    def blocks(self, size, track=None):
        """All samples in arrays of so many frames; the last one may be shorter."""
        size = int(size)
        if size < 1:
            raise UsageError(f"blocks: a block of {size} samples is too short; use 1 or more")
        return (self.read(start, min(size, self.frames - start), track) for start in range(0, self.frames, size))

    def _number(self, track):
        if not isinstance(track, str):
            return track.number if isinstance(track, TrackInfo) else _check_number(track, len(self.tracks))
        numbers = [row.number for row in self.tracks if row.name == track]
        if len(numbers) != 1:
            raise UsageError(f"{len(numbers) or 'no'} tracks are called {track!r}; use a number from 1 to "
                             f"{len(self.tracks)}")
        return numbers[0]

    def _get(self):
        if self._opened is None:
            raise UsageError("the timeline was closed; open it again")
        return self._opened

    def close(self):
        """Frees media and memory; nothing can be read any more."""
        self._opened = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def __repr__(self):
        return f"<sonaro.Timeline {self.name!r}: {self.duration:g} s of {self.layout} at {self.rate} Hz>"


def _check_number(track, count):
    if not 1 <= int(track) <= count:
        raise UsageError(f"there is no track {track}; the timeline has {count}")
    return int(track)


def open(timeline, *, base=None, readers=1, warm_up=None, **options):  # pylint: disable=redefined-builtin
    """Opens a timeline for reading, as render takes it: a path, or an object with to_json_string().

    readers  how many threads can render at once; each keeps its media open
    warm_up  where effects remember more than can be settled at a start, a read elsewhere than after the last one
             begins so many seconds earlier; None for the start of the timeline, which alone is exact then
    options  those of render that lay out a timeline: rate, layout, resampling, fades, media, keep_pitch, stretch,
             binaural, listener, yaw, head_pitch, roll

    Raises an Error.
    """
    texts = {}
    path = take_input(timeline, base, texts)
    if not 1 <= readers <= 256:
        raise UsageError(f"readers: {readers} is out of range; use 1 to 256")
    if warm_up is not None and not 0 <= warm_up <= 1e6:
        raise UsageError(f"warm_up: {warm_up} is out of range; use seconds from 0 on, or None")
    return Timeline(_sonaro.OpenTimeline(os.fsencode(path), texts.get(path), make_arguments(options), readers,
                                         -1.0 if warm_up is None else float(warm_up)))
