"""Arrays of samples as functions take them."""
import numpy

from ._errors import UsageError

MOST_CHANNELS = 64


def take_samples(samples, what):
    """Floats of the shape (channels, frames); a row of frames is one channel."""
    array = numpy.asarray(samples)
    if array.dtype.kind == "i" or array.dtype.kind == "u":
        raise UsageError(f"{what}: samples are floats from -1 to 1; scale those of {array.dtype} first")
    array = numpy.ascontiguousarray(array, dtype=numpy.float32)
    if array.ndim == 1:
        array = array[numpy.newaxis, :]
    if array.ndim != 2 or not 1 <= array.shape[0] <= MOST_CHANNELS:
        raise UsageError(f"{what}: samples of the shape {array.shape} are none; use (channels, frames) with 1 to "
                         f"{MOST_CHANNELS} channels")
    return array


def take_rate(rate, what):
    """A whole number of samples a second."""
    if rate is None:
        raise UsageError(f"{what}: an array has no rate; give one")
    if int(rate) != rate or not 1 <= rate <= 10**7:
        raise UsageError(f"{what}: a rate of {rate} Hz is out of range; use a whole number from 1 to 10000000")
    return int(rate)


def name_layout(layout, channels):
    """The layout that is asked for, or the usual one of so many channels."""
    if layout is not None:
        return str(layout)
    return {1: "mono", 2: "stereo", 6: "5.1"}.get(channels, str(channels))
