"""render: the command "sonaro render" as a function."""
import json
import os

from ._command import run
from ._errors import UsageError
from ._values import path as take_path

_OWN = {"output": "output", "json": "the result is always data", "quiet": "nothing is printed",
        "help": "see the documentation", "piece": "sonaro.farm renders pieces"}


def render(timeline, output, *, report=True, base=None, progress=None, cancel=None, **options):
    """Renders a timeline, or sound files joined end to end, into a sound file, or a timeline into stems in a folder.

    timeline  a path; an object with to_json_string(), such as a timeline of OpenTimelineIO, whose relative media
              count from the folder base (by default the working folder); a Sequence, with those of the options that
              it does not set itself; or a list of sound files
    output    the path of the file; it appears once it is complete, and what was there before stays until then
    report    True for all that the command's --report says, with clips, tracks and their loudness; False for the
              summary alone, for which less is measured; a path to write the report there as well, as JSON, or as a page
              where it ends in .html, of which the summary alone comes back
    progress  called with the samples that are done and those of all passes, about 25 times a second, on this thread;
              what it raises ends the render
    cancel    a Cancel that another thread may use
    options   those of the command, which "sonaro render --help" lists, by their names, with underscores: normalize=-16, limit_dbtp=-1, stems="track",
              no_overwrite=True, media=["a", "b"], range=(start, duration), keep_pitch=True. Numbers of times are
              seconds. A list gives an option once for each of its values. An effect may be a pair of its URI and a
              dict of its controls, in which "preset" stands for the preset.

    Returns the report as dicts and lists: Docs of the command describe its keys. Media that are missing are silent,
    are listed under "missing", and a SonaroWarning says so, as it does of all that the command would warn of.

    Raises an Error; after one, and after KeyboardInterrupt, nothing half-written is left. The interpreter's lock is
    free meanwhile, and any number of threads may render. Nothing is printed.
    """
    for name, why in _OWN.items():
        if name in options:
            raise TypeError(f"render() has no option {name!r}: {why}")
    options["output"] = take_path(output, "output")
    if options["output"] == b"-":
        raise UsageError("'-' would be the standard output; give a path")
    is_kept = not isinstance(report, bool)
    if is_kept:
        options.update(report=take_path(report, "report"), json=True)
    elif report:
        options["report"] = b"-"
    else:
        options["json"] = True
    options["quiet"] = True
    inputs = timeline if isinstance(timeline, (list, tuple)) else [timeline]
    result, _ = run("render", inputs, options, base=base, progress=progress, cancel=cancel)
    if is_kept and not os.fsencode(report).lower().endswith((b".html", b".htm")):
        with open(report, encoding="utf-8") as file:
            result = json.load(file)
    return result
