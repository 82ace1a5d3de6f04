from dataclasses import dataclass
from typing import Any, Dict, List, Optional, Sequence as Several, Tuple, Union, overload

from ._readable import Readable
from ._render import HasJson, Path
from ._sequence import OpenSequence, Sequence

@dataclass(frozen=True)
class Note:
    kind: str
    place: str
    text: str
    clip: Optional[str] = None
    track: Optional[str] = None

@dataclass(frozen=True)
class TrackInfo:
    number: int
    name: str
    layout: str
    is_heard: bool
    reason: Optional[str]
    place: str

class Timeline(Readable):
    tracks: Tuple[TrackInfo, ...]
    notes: Tuple[Note, ...]
    clips: List[Dict[str, Any]]
    markers: List[Dict[str, Any]]
    missing: List[Dict[str, Any]]

@overload
def open(timeline: Sequence, *, readers: int = 1) -> OpenSequence: ...
@overload
def open(
    timeline: Union[Path, HasJson],
    *,
    base: Optional[Path] = None,
    readers: int = 1,
    warm_up: Optional[float] = None,
    rate: Optional[int] = None,
    layout: Union[str, int, None] = None,
    resampling: Optional[str] = None,
    fades: Optional[str] = None,
    media: Union[Path, Several[Path], None] = None,
    keep_pitch: bool = False,
    stretch: Optional[str] = None,
    binaural: bool = False,
    listener: Optional[Path] = None,
    yaw: Optional[float] = None,
    head_pitch: Optional[float] = None,
    roll: Optional[float] = None,
) -> Timeline: ...
