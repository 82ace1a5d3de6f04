"""Arrays of samples as functions take them."""
import numpy

from . import _sonaro
from ._errors import UsageError
from ._values import show, whole

MOST_CHANNELS = 64


def take_samples(samples, what, *, is_row_one_channel=True):
    """Floats of the shape (channels, frames); a row of frames is one channel."""
    if numpy.ma.isMaskedArray(samples):
        raise UsageError(f"{what}: samples cannot be masked; fill those that are with zeros")
    try:
        array = numpy.asarray(samples)
    except (TypeError, ValueError):
        raise UsageError(f"{what}: {show(samples)} is no array of samples") from None
    if array.dtype.kind in "iu":
        raise UsageError(f"{what}: samples are floats from -1 to 1; scale those of {array.dtype} first")
    if array.dtype.kind != "f":
        raise UsageError(f"{what}: samples are floats from -1 to 1, and not of the type {array.dtype}")
    with numpy.errstate(over="ignore"):
        array = numpy.ascontiguousarray(array, dtype=numpy.float32).reshape(array.shape)
    if array.ndim == 1 and is_row_one_channel:
        array = array[numpy.newaxis, :]
    if is_row_one_channel and (array.ndim != 2 or not 1 <= array.shape[0] <= MOST_CHANNELS):
        raise UsageError(f"{what}: samples of the shape {array.shape} are none; use (channels, frames) with 1 to "
                         f"{MOST_CHANNELS} channels")
    return array


def take_finite(samples, what):
    """The same, without infinite ones and what is no number."""
    array = take_samples(samples, what)
    if not numpy.isfinite(array).all():
        raise UsageError(f"{what}: a sample is not a finite number; replace those that are not")
    return array


def take_rate(rate, what):
    """A whole number of samples a second."""
    if rate is None:
        raise UsageError(f"{what}: an array has no rate; give one")
    return whole(rate, f"{what}: rate in Hz", 1, 10**7)


def check_layout(layout, what):
    """The name of a layout, as the engine has it."""
    name = str(layout)
    if not _sonaro.count_channels(name.encode("utf-8", "replace")):
        raise UsageError(f"{what}: layout: {show(name)} is not a layout; use mono, stereo, 5.1, ambisonic1 or a number of "
                         f"channels from 1 to {MOST_CHANNELS}")
    return name


def take_layout(layout, channels, what):
    """The layout that is asked for, or the usual one of so many channels."""
    if layout is None:
        return {1: "mono", 2: "stereo", 6: "5.1"}.get(channels, str(channels))
    name = check_layout(layout, what)
    count = _sonaro.count_channels(name.encode())
    if count != channels:
        raise UsageError(f"{what}: the samples have {channels} channels, but the layout has {count}")
    return name
