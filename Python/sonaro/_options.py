"""Turns keyword arguments into the options of the command, and timelines into what it reads."""
import os
from decimal import Decimal

from ._errors import UsageError

# How the values of a sequence are joined into one, where they are not an option each.
_JOINED = {"range": "+", "learn": "..", "channels": ","}


def _text(value):
    """A value as a person would type it; numbers without an exponent, which times do not have."""
    if isinstance(value, (str, bytes, os.PathLike)):
        return os.fsencode(value)
    if hasattr(value, "item"):
        value = value.item()
    if isinstance(value, float) and value == value and abs(value) != float("inf"):
        value = format(Decimal(repr(value)), "f")
    return str(value).encode()


def _effect(value):
    """An effect, or a pair of it and its settings: a dict of controls, with "preset" among them where it has one."""
    if isinstance(value, (str, bytes)):
        return [b"--effect=" + _text(value)]
    uri, settings = value
    arguments = [b"--effect=" + _text(uri)]
    for symbol, setting in settings.items():
        name = b"--preset=" if symbol == "preset" else b"--set=" + symbol.encode() + b"="
        arguments.append(name + _text(setting))
    return arguments


def _one(name, value):
    option = b"--" + name.replace("_", "-").encode()
    if value is None or value is False:
        return []
    if value is True:
        return [option]
    if name == "effect":
        return [argument for effect in (value if isinstance(value, list) else [value]) for argument in _effect(effect)]
    if name == "set" and isinstance(value, dict):
        return [b"--set=" + symbol.encode() + b"=" + _text(setting) for symbol, setting in value.items()]
    if isinstance(value, (list, tuple)):
        if name in _JOINED:
            return [option + b"=" + _JOINED[name].encode().join(_text(part) for part in value)]
        return [option + b"=" + _text(part) for part in value]
    return [option + b"=" + _text(value)]


def make_arguments(options):
    """Options in the order in which they were given."""
    return [argument for name, value in options.items() for argument in _one(name, value)]


def take_input(timeline, base, texts):
    """The path of an input as bytes. One in memory gets a name in the folder base, and its JSON goes into texts."""
    to_json_string = getattr(timeline, "to_json_string", None)
    if to_json_string is None:
        if base is not None:
            raise UsageError("base: applies only to timelines in memory; media of a file count from its folder")
        path = os.fsencode(timeline)
        if path == b"-":
            raise UsageError("'-' would be the standard input; give a path")
        return path
    folder = os.fsencode(base) if base is not None else b"."
    number = f"-{len(texts) + 1}" if texts else ""
    path = os.path.join(folder, f"<timeline{number}>.otio".encode())
    texts[path] = to_json_string().encode()
    return path
