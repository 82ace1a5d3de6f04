"""The exceptions of the package, and its warnings."""
import os


class Error(Exception):
    """A failure that a person can act on. Its text is the one line that the command prints.

    file     the file it is about, as it was named; None for none
    place    the place in the file: a JSON pointer, or a line and a column; None for none
    pointer  the place where it is a JSON pointer (RFC 6901), else None
    reason   what is wrong
    remedy   what to do about it; None where the reason says it
    report   of a render that strict refused, the report; else None
    """

    def __init__(self, message, *, file=None, place=None, reason=None, remedy=None):
        super().__init__(message)
        self.file = file
        self.place = place
        self.reason = reason or message
        self.remedy = remedy
        self.report = None

    @property
    def pointer(self):
        return self.place if self.place and self.place.startswith("/") else None

    def __reduce__(self):
        return _restore, (type(self), self.args[0], self.__dict__)


def _restore(kind, message, state):
    error = kind(message)
    error.__dict__.update(state)
    return error


class UsageError(Error, ValueError):
    """What was asked for makes no sense, by itself or for this input."""


class InputError(Error):
    """An input cannot be read, or strict does not accept it."""


class NothingHeardError(InputError):
    """The timeline is in order, and nothing in it is heard; nothing was written."""


class OutputError(Error):
    """The output cannot be written."""


class EngineError(Error):
    """The engine would not do what was asked of it."""


class Cancelled(Error):
    """It was cancelled; nothing was written."""


class SonaroWarning(UserWarning):
    """Something about an input that its author should know, such as media that are missing and silent."""


_KINDS = {
    "usage": UsageError,
    "input": InputError,
    "nothing-heard": NothingHeardError,
    "output": OutputError,
    "engine": EngineError,
    "cancelled": Cancelled,
}


def make(kind, message, file, place, reason, remedy):
    """The exception for what the library throws; all texts as bytes, empty for none."""
    def text(data):
        return data.decode("utf-8", "replace") or None

    return _KINDS[kind](text(message) or "", file=os.fsdecode(file) or None, place=text(place), reason=text(reason),
                        remedy=text(remedy))
