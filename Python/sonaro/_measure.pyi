from dataclasses import dataclass
from typing import Any, Dict, Optional, Union

import numpy
from numpy.typing import ArrayLike, NDArray

from ._readable import Readable
from ._render import HasJson, Path
from ._sequence import Sequence
from ._sonaro import Cancel
from ._timeline import TrackInfo

@dataclass(frozen=True)
class LoudnessSeries:
    step: float
    momentary: NDArray[numpy.float64]
    short_term: NDArray[numpy.float64]
    @property
    def times(self) -> NDArray[numpy.float64]: ...

@dataclass(frozen=True)
class Waveform:
    rate: int
    samples_per_column: int
    columns: NDArray[numpy.float32]
    @property
    def minima(self) -> NDArray[numpy.float32]: ...
    @property
    def maxima(self) -> NDArray[numpy.float32]: ...
    @property
    def rms(self) -> NDArray[numpy.float32]: ...
    @property
    def times(self) -> NDArray[numpy.float64]: ...

def loudness(
    source: Union[ArrayLike, Readable, Sequence, Path, HasJson],
    rate: Optional[int] = None,
    *,
    layout: Union[str, int, None] = None,
    base: Optional[Path] = None,
    cancel: Optional[Cancel] = None,
    track: Union[str, int, TrackInfo, None] = None,
    **options: Any,
) -> Dict[str, Any]: ...
def waveform(
    source: Union[ArrayLike, Readable, Sequence, Path, HasJson],
    rate: Optional[int] = None,
    *,
    samples_per_column: int = 256,
    track: Union[str, int, TrackInfo, None] = None,
    base: Optional[Path] = None,
) -> Waveform: ...
