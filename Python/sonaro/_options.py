"""Turns keyword arguments into the options of the command, and timelines into what it reads."""
import os
from decimal import Decimal

import numpy

from ._errors import UsageError
from ._readable import Readable
from ._values import path as take_path
from ._values import show

# How the values of a sequence are joined into one, where they are not an option each.
_JOINED = {"range": "+", "learn": "..", "channels": ","}
# Options without a value.
FLAGS = {"no_overwrite", "keep_pitch", "binaural", "reverse", "as_playback", "denoise"}


def _text(value, option):
    """A value as a person would type it; numbers without an exponent, which times do not have."""
    if isinstance(value, (str, bytes, os.PathLike)):
        data = take_path(value, option)
        if not data:
            raise UsageError(f"{option}: the value is empty; give one, or leave the option out")
        return data
    if hasattr(value, "item"):
        value = value.item()
    if isinstance(value, float) and value == value and abs(value) != float("inf"):
        value = format(Decimal(repr(value)), "f")
    return str(value).encode("utf-8", "replace").replace(b"\0", b"")


def _effect(value):
    """An effect, or a pair of it and its settings: a dict of controls, with "preset" among them where it has one."""
    if isinstance(value, (str, bytes)):
        return [b"--effect=" + _text(value, "--effect")]
    if not isinstance(value, (list, tuple)) or len(value) != 2 or not isinstance(value[1], dict):
        raise UsageError(f"--effect: {show(value)} is no effect; use its URI, or a pair of that and a dict of controls")
    uri, settings = value
    arguments = [b"--effect=" + _text(uri, "--effect")]
    for symbol, setting in settings.items():
        arguments.append(b"--preset=" + _text(setting, "--preset") if symbol == "preset" else _control(symbol, setting))
    return arguments


def _control(symbol, setting):
    return b"--set=" + _text(symbol, "--set") + b"=" + _text(setting, f"--set {show(symbol)}")


def _one(name, value):
    words = "--" + name.replace("_", "-")
    option = words.encode("utf-8", "replace")
    if value is None or isinstance(value, (bool, numpy.bool_)):
        return [option] if value else []
    if name in FLAGS:
        raise UsageError(f"{words}: {show(value)} is neither True nor False")
    if name == "effect":
        return [argument for effect in (value if isinstance(value, list) else [value]) for argument in _effect(effect)]
    if name == "set" and isinstance(value, dict):
        return [_control(symbol, setting) for symbol, setting in value.items()]
    if isinstance(value, (list, tuple)):
        if name in _JOINED:
            return [option + b"=" + _JOINED[name].encode().join(_text(part, words) for part in value)]
        return [option + b"=" + _text(part, words) for part in value]
    return [option + b"=" + _text(value, words)]


def make_arguments(options):
    """Options in the order in which they were given."""
    return [argument for name, value in options.items() for argument in _one(name, value)]


def take_input(timeline, base, texts):
    """The path of an input as bytes. One in memory gets a name in the folder base, and its JSON goes into texts."""
    to_json_string = getattr(timeline, "to_json_string", None)
    if to_json_string is None:
        if base is not None:
            raise UsageError("base: applies only to timelines in memory; media of a file count from its folder")
        if isinstance(timeline, Readable):
            raise UsageError(f"{timeline!r} is open for reads; give its path, or the Sequence that was opened")
        path = take_path(timeline, "timeline")
        if path == b"-":
            raise UsageError("'-' would be the standard input; give a path")
        return path
    folder = take_path(base, "base") if base is not None else b"."
    number = f"-{len(texts) + 1}" if texts else ""
    path = os.path.join(folder, f"<timeline{number}>.otio".encode())
    texts[path] = _take_json(to_json_string())
    return path


def _take_json(text):
    if not isinstance(text, str):
        raise UsageError(f"to_json_string() returned {show(text)}, which is no text")
    try:
        return text.encode()
    except UnicodeEncodeError:
        raise UsageError("to_json_string() returned half a character, which is not valid in JSON") from None
