"""Runs commands in this process."""
import json
import warnings

from . import _sonaro
from ._errors import SonaroWarning, UsageError
from ._exit import CALLS
from ._options import make_arguments, take_input
from ._sequence import Sequence
from ._values import show


def _take(entry, base, texts, opened):
    if isinstance(entry, Sequence):
        if base is not None:
            raise UsageError("base: does not apply to a sequence")
        path = f"<sequence {len(opened) + 1}>".encode()
        opened[path] = entry.open()
        return path
    return take_input(entry, base, texts)


def run(command, inputs, options, *, base=None, progress=None, cancel=None, warn=None):
    """Runs a command that prints JSON. Returns that, parsed, and the messages of errors that did not end it.

    warn  called with the text of each warning in place of a SonaroWarning
    """
    if not inputs:
        raise UsageError(f"{command}: there is no input; give one")
    if len(inputs) > 1 and any(isinstance(entry, Sequence) for entry in inputs):
        raise UsageError(f"{command}: a sequence goes by itself; nest several in one, or give each a call")
    if cancel is not None and not isinstance(cancel, _sonaro.Cancel):
        raise UsageError(f"cancel: {show(cancel)} is no Cancel")
    if progress is not None and not callable(progress):
        raise UsageError(f"progress: {show(progress)} cannot be called")
    texts = {}
    opened = {}
    paths = [_take(entry, base, texts, opened) for entry in inputs]
    arguments = [command.encode(), *make_arguments(options), b"--", *paths]
    programmes = {path: sequence._opened for path, sequence in opened.items()}  # pylint: disable=protected-access
    with CALLS:
        _, output, errors, notes, error = _sonaro.run(arguments, texts, programmes, cancel or _sonaro.Cancel(), progress)
    report = json.loads(output) if output else None
    for note in notes:
        if warn is not None:
            warn(note.decode("utf-8", "replace"))
            continue
        try:
            # The caller of render and its like.
            warnings.warn(note.decode("utf-8", "replace"), SonaroWarning, stacklevel=3)
        except SonaroWarning:
            # Where warnings are errors, an error comes first.
            if error is None:
                raise
    if error is not None:
        for programme in programmes.values():
            failure = programme.take_failure()
            if failure is not None:
                raise failure
        error.report = report
        raise error
    return report, [message.decode("utf-8", "replace") for message in errors]
