from typing import Iterator, Tuple, TypeVar, Union

import numpy
from numpy.typing import NDArray

from ._timeline import TrackInfo

_Self = TypeVar("_Self", bound="Readable")

class Readable:
    name: str
    rate: int
    frames: int
    duration: float
    layout: str
    channels: int
    def read(self, start: int, frames: int, track: Union[str, int, TrackInfo, None] = None) -> NDArray[numpy.float32]: ...
    def blocks(self, size: int, track: Union[str, int, TrackInfo, None] = None) -> Iterator[NDArray[numpy.float32]]: ...
    def close(self) -> None: ...
    def __enter__(self: _Self) -> _Self: ...
    def __exit__(self, *_: object) -> None: ...
