"""open: a timeline as an array that is rendered where it is read."""
import json
from dataclasses import dataclass
from typing import Optional

from . import _sonaro
from ._errors import UsageError
from ._exit import CALLS
from ._options import make_arguments, take_input
from ._readable import Readable
from ._sequence import Sequence
from ._values import number, whole


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


class Timeline(Readable):
    """A timeline that was opened.

    tracks    the outermost tracks, as TrackInfo, from the bottom up
    notes     what was guessed, ignored or remarked, as Note
    clips, markers, missing   as the report of render lists them
    """

    def __init__(self, opened):
        facts = json.loads(opened.describe())
        programme = facts["programme"]
        super().__init__(opened, facts["name"], programme["rate"], programme["samples"], programme["layout"])
        self.tracks = tuple(TrackInfo(number, row["name"], row["layout"], row["isHeard"], row.get("reason"), row["place"])
                            for number, row in enumerate(facts["tracks"], 1))
        self._track_names = tuple(track.name for track in self.tracks)
        self.notes = tuple(Note(**note) for note in facts["notes"])
        self.clips = facts["clips"]
        self.markers = facts["markers"]
        self.missing = facts["missing"]


def open(timeline, *, base=None, readers=1, warm_up=None, **options):  # pylint: disable=redefined-builtin
    """Opens a timeline for reading, as render takes it: a path, or an object with to_json_string(); or a Sequence,
    whose readers are all that it has of the options.

    readers  how many threads can render at once; each keeps its media open
    warm_up  where effects remember more than can be settled at a start, a read elsewhere than after the last one
             begins so many seconds earlier; None for the start of the timeline, which alone is exact then
    options  those of render that lay out a timeline: rate, layout, resampling, fades, media, keep_pitch, stretch,
             binaural, listener, yaw, head_pitch, roll

    Raises an Error.
    """
    if isinstance(timeline, Sequence):
        if base is not None or warm_up is not None or options:
            raise UsageError(f"open: {next(iter(options), 'base')} does not apply to a sequence, which sets this itself")
        return timeline.open(readers)
    texts = {}
    path = take_input(timeline, base, texts)
    readers = whole(readers, "readers", 1, 256)
    settling = -1.0 if warm_up is None else number(warm_up, "warm_up", 0, 1e6)
    arguments = make_arguments(options)
    with CALLS:
        opened = _sonaro.OpenTimeline(path, texts.get(path), arguments, readers, settling)
    return Timeline(opened)
