import os
from typing import Any, Callable, Dict, Iterable, List, Optional, Protocol, Sequence as Several, Tuple, Union

from ._sequence import Sequence
from ._sonaro import Cancel

Path = Union[str, bytes, "os.PathLike[str]"]
Time = Union[str, float]

class HasJson(Protocol):
    def to_json_string(self) -> str: ...

def render(
    timeline: Union[Path, HasJson, Sequence, Several[Path]],
    output: Path,
    *,
    report: Union[bool, Path] = True,
    base: Optional[Path] = None,
    progress: Optional[Callable[[int, int], object]] = None,
    cancel: Optional[Cancel] = None,
    format: Optional[str] = None,
    bits: Union[int, str, None] = None,
    dither: Optional[str] = None,
    no_overwrite: bool = False,
    rate: Optional[int] = None,
    resampling: Optional[str] = None,
    layout: Union[str, int, None] = None,
    block: Optional[int] = None,
    jobs: Optional[int] = None,
    gain_db: Optional[float] = None,
    normalize: Optional[float] = None,
    limit_dbtp: Optional[float] = None,
    fade_in: Optional[Time] = None,
    fade_out: Optional[Time] = None,
    tail: Optional[Time] = None,
    strict: Union[bool, str] = False,
    keep_pitch: bool = False,
    stretch: Optional[str] = None,
    binaural: bool = False,
    listener: Optional[Path] = None,
    yaw: Optional[float] = None,
    head_pitch: Optional[float] = None,
    roll: Optional[float] = None,
    range: Union[str, Tuple[Time, Time], None] = None,
    stems: Optional[str] = None,
    media: Union[Path, Several[Path], None] = None,
    fades: Optional[str] = None,
    at: Union[Time, Several[Time], None] = None,
    start: Optional[Time] = None,
    duration: Optional[Time] = None,
    reverse: bool = False,
    as_playback: bool = False,
    speed: Optional[float] = None,
    pitch: Optional[float] = None,
    stream: Optional[int] = None,
    channels: Union[str, Several[int], None] = None,
    pan: Optional[float] = None,
    mixdown: Optional[str] = None,
    denoise: bool = False,
    reduction: Optional[float] = None,
    learn: Union[str, Tuple[Time, Time], None] = None,
    effect: Union[str, List[Union[str, Tuple[str, Dict[str, Any]]]], None] = None,
    effect_file: Union[Path, Several[Path], None] = None,
    set: Union[str, Several[str], Dict[str, float], None] = None,
    preset: Union[str, Several[str], None] = None,
) -> Dict[str, Any]: ...
