from fractions import Fraction
from typing import Union

import numpy
from numpy.typing import ArrayLike, NDArray

def resample(
    samples: ArrayLike, from_rate: Union[float, Fraction], to_rate: Union[float, Fraction], *, quality: str = "exact"
) -> NDArray[numpy.float32]: ...
def stretch(
    samples: ArrayLike,
    rate: int,
    speed: float = 1.0,
    *,
    keep_pitch: bool = True,
    semitones: float = 0.0,
    engine: str = "omega",
) -> NDArray[numpy.float32]: ...
