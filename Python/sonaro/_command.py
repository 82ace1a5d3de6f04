"""Runs commands in this process."""
import json
import warnings

from . import _sonaro
from ._errors import SonaroWarning
from ._options import make_arguments, take_input


def run(command, inputs, options, *, base=None, progress=None, cancel=None):
    """Runs a command that prints JSON. Returns that, parsed, and the messages of errors that did not end it."""
    texts = {}
    paths = [take_input(entry, base, texts) for entry in inputs]
    arguments = [command.encode(), *make_arguments(options), b"--", *paths]
    _, output, errors, notes, error = _sonaro.run(arguments, texts, cancel or _sonaro.Cancel(), progress)
    report = json.loads(output) if output else None
    for note in notes:
        # The caller of render and its like.
        warnings.warn(note.decode("utf-8", "replace"), SonaroWarning, stacklevel=3)
    if error is not None:
        error.report = report
        raise error
    return report, [message.decode("utf-8", "replace") for message in errors]
