"""resample and stretch: arrays at other rates, speeds and pitches."""
from fractions import Fraction

from . import _sonaro
from ._arrays import take_finite, take_rate
from ._errors import UsageError
from ._exit import CALLS
from ._values import flag, fraction, number, show


def resample(samples, from_rate, to_rate, *, quality="exact"):
    """Samples of the shape (channels, frames) at another rate, as a render converts them: output n stands exactly at
    n * from_rate / to_rate, and nothing is late. At the same rate they stay as they are. Rates are whole numbers or fractions, up to a ratio of 1000.

    quality  "exact", with noise and aliases below -140 dB, or "draft", below -100 dB and faster

    Raises a UsageError.
    """
    if quality not in ("exact", "draft"):
        raise UsageError(f"resample: {quality!r} is no quality; use exact or draft")
    rates = [fraction(from_rate, "resample: from_rate"), fraction(to_rate, "resample: to_rate")]
    if min(rates) <= 0:
        raise UsageError(f"resample: {from_rate} to {to_rate} Hz are no rates; use numbers above 0")
    step = rates[0] / rates[1]
    if max(step.numerator, step.denominator) >= 2**62:
        raise UsageError("resample: the rates have too many digits; use fractions of whole numbers")
    if not Fraction(1, 1000) <= step <= 1000:
        raise UsageError(f"resample: {show(from_rate)} to {show(to_rate)} Hz are more than 1000 times apart; resample in "
                         "steps")
    array = take_finite(samples, "resample")
    if step == 1:
        return array.copy()
    with CALLS:
        return _sonaro.resample(array, step.numerator, step.denominator, quality == "draft")


def stretch(samples, rate, speed=1.0, *, keep_pitch=True, semitones=0.0, engine="omega"):
    """Samples of the shape (channels, frames) at another speed and pitch, as "sonaro render" with --speed, --pitch and
    --keep-pitch gives them.

    speed       0.01 to 100; 2 is half as long. With keep_pitch, 0.1 to 10 times the factor of the pitch
    keep_pitch  whether the pitch stays, or follows the speed
    semitones   a shift of the pitch besides, -24 to 24
    engine      "omega", "scaler" or, where it was built in, "rubberband"

    Raises a UsageError.
    """
    if engine not in ("omega", "scaler", "rubberband"):
        raise UsageError(f"stretch: {engine!r} is no engine; use omega, scaler or rubberband")
    array, rate = take_finite(samples, "stretch"), take_rate(rate, "stretch")
    speed, semitones = number(speed, "stretch: speed"), number(semitones, "stretch: semitones")
    keep_pitch = flag(keep_pitch, "stretch: keep_pitch")
    if speed == 1 and semitones == 0:
        return array.copy()
    with CALLS:
        return _sonaro.stretch(array, rate, speed, keep_pitch, semitones, engine)
