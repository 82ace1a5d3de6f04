"""Checks of what users pass in. Each names the place and raises a UsageError."""
import collections.abc
import math
import numbers
import os
from fractions import Fraction

import numpy

from ._errors import UsageError

TICKS = 254016000000
LONGEST_SECONDS = 360000


def show(value):
    """A value for a message: one line, and not a long one."""
    text = " ".join(repr(value).split())
    return text if len(text) <= 100 else f"{text[:97]}..."


def choose(value, choices, what):
    try:
        return choices[value]
    except (KeyError, TypeError):
        raise UsageError(f"{what}: {show(value)} is not valid; use {', '.join(choices)}") from None


def flag(value, what):
    if not isinstance(value, (numbers.Number, numpy.bool_)) or value not in (0, 1):
        raise UsageError(f"{what}: {show(value)} is neither True nor False")
    return bool(value)


def fraction(value, what):
    try:
        if isinstance(value, numbers.Integral):
            return Fraction(int(value))
        if not isinstance(value, (str, bytes)):
            return value if isinstance(value, Fraction) else Fraction(float(value))
    except (TypeError, ValueError, OverflowError):
        pass
    raise UsageError(f"{what}: {show(value)} is not a finite number")


def number(value, what, least=-math.inf, most=math.inf):
    """A finite number within limits."""
    exact = fraction(value, what)
    if not least <= exact <= most or abs(exact) > 1e300:
        limits = f"; use {least:.12g} to {most:.12g}" if most < math.inf else ""
        raise UsageError(f"{what}: {show(value)} is out of range{limits}")
    return float(exact)


def whole(value, what, least, most):
    """A whole number within limits."""
    try:
        result = int(value)
        if result == value and least <= result <= most:
            return result
    except (TypeError, ValueError, OverflowError):
        pass
    raise UsageError(f"{what}: {show(value)} is out of range; use a whole number from {least} to {most}")


def ticks(time, what):
    result = math.floor(fraction(time, what) * TICKS + Fraction(1, 2))
    if abs(result) > LONGEST_SECONDS * TICKS:
        raise UsageError(f"{what}: {show(time)} seconds are out of range; use up to 100 hours")
    return result


def length(time, what):
    """Ticks of what cannot be shorter than nothing."""
    result = ticks(time, what)
    if result < 0:
        raise UsageError(f"{what}: a length of {show(time)} seconds is out of range; use 0 or more")
    return result


def ratio(value, what):
    """A fraction that has room in 63 bits."""
    exact = fraction(value, what)
    if exact.denominator > 2**44:
        exact = exact.limit_denominator(2**40)
    if abs(exact.numerator) >= 2**62:
        raise UsageError(f"{what}: {show(value)} is out of range")
    return exact.numerator, exact.denominator


def text(value, what):
    """A text as bytes; names of files, as Python has them, keep theirs."""
    if not isinstance(value, str):
        raise UsageError(f"{what}: {show(value)} is no text")
    try:
        return value.encode("utf-8", "surrogateescape")
    except UnicodeEncodeError:
        raise UsageError(f"{what}: {show(value)} has half a character; use text that can be encoded") from None


def path(value, what):
    """A path as bytes."""
    try:
        data = os.fsencode(value)
    except TypeError:
        raise UsageError(f"{what}: {show(value)} is no path") from None
    except UnicodeEncodeError:
        raise UsageError(f"{what}: {show(value)} has half a character, which no path can have") from None
    if b"\0" in data:
        raise UsageError(f"{what}: {show(value)} has a character NUL, which no path can have")
    return data


def each(values, kind, what):
    """The members of a list, all of a kind."""
    if isinstance(values, (str, bytes)) or not isinstance(values, collections.abc.Sequence):
        raise UsageError(f"{what}: {show(values)} is no list")
    for value in values:
        if not isinstance(value, kind):
            name = "pair" if isinstance(kind, tuple) else kind.__name__
            raise UsageError(f"{what}: {show(value)} is no {name}")
    return values
