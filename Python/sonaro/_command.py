"""Runs commands in this process."""
import json
import warnings

from . import _sonaro
from ._errors import SonaroWarning, UsageError
from ._options import make_arguments, take_input
from ._sequence import Sequence


def _take(entry, base, texts, opened):
    if isinstance(entry, Sequence):
        if base is not None:
            raise UsageError("base: does not apply to a sequence")
        path = f"<sequence {len(opened) + 1}>".encode()
        opened[path] = entry.open()._opened  # pylint: disable=protected-access
        return path
    return take_input(entry, base, texts)


def run(command, inputs, options, *, base=None, progress=None, cancel=None):
    """Runs a command that prints JSON. Returns that, parsed, and the messages of errors that did not end it."""
    texts = {}
    opened = {}
    paths = [_take(entry, base, texts, opened) for entry in inputs]
    arguments = [command.encode(), *make_arguments(options), b"--", *paths]
    _, output, errors, notes, error = _sonaro.run(arguments, texts, opened, cancel or _sonaro.Cancel(), progress)
    report = json.loads(output) if output else None
    for note in notes:
        # The caller of render and its like.
        warnings.warn(note.decode("utf-8", "replace"), SonaroWarning, stacklevel=3)
    if error is not None:
        for sequence in opened.values():
            failure = sequence.take_failure()
            if failure is not None:
                raise failure
        error.report = report
        raise error
    return report, [message.decode("utf-8", "replace") for message in errors]
