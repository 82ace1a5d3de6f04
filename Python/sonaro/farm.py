"""Renders timelines on a cluster, by Dask distributed (python3-distributed).

Workers run this package, and reach timelines, media and outputs by the same paths, or media through the folders of the
option media. The client itself reads and writes none of them but the table.
"""
import contextlib
import csv
import os
import pathlib
import shutil
import tempfile
import time
import uuid
import warnings

from ._command import run
from ._errors import Error, InputError, OutputError, SonaroWarning, UsageError
from ._values import show

TIMELINES = (".otio", ".otioz", ".otiod")
COLUMNS = ("timeline", "output", "status", "seconds", "samples", "loudness", "true_peak", "missing", "error")

_OWN = {"cancel": "workers do not see it; what progress raises ends the call",
        "json": "the result is always data", "quiet": "workers print nothing",
        "piece": "farm.render renders them"}
_NOT_FOR_ALL = {"report": "one file cannot be that of all timelines; the table is the result",
                "stems": "each timeline becomes one file", **_OWN}


def render(timeline, output, client, *, pieces=None, report=True, folder=None, retries=2, progress=None, **options):
    """Renders one timeline in pieces, on all workers of a cluster, to the bytes that one render would write.

    timeline  its path, as workers reach it
    output    the path of the file; it appears once it is complete. It is checked before anything is rendered
    client    a distributed.Client
    pieces    how many; by default four for each thread of the cluster. Pieces cost about the same, so a few for each
              thread keep all of them busy to the end. Effects that remember all that came before make it one
    report    True for all that the command's --report says, for which pieces carry what the meters of tracks hear;
              False for the summary alone; a path to write the report there as well
    folder    where pieces lie meanwhile, for all workers to reach; by default beside the output. It is made where there
              is none, and what was made is removed at the end
    retries   how often a task is begun again after an error, but for an InputError and a UsageError, which would come
              again; those of workers that are lost begin again anyway
    progress  called with the pieces that are done and all of them; what it raises ends the render
    options   those of the command "sonaro plan" by their names, as of sonaro.render, and no_overwrite

    Returns the report as sonaro.render does, and warns as it does. Raises an Error; that of strict has the report, and
    writes it where report is a path.
    """
    _refuse("render", options, _OWN)
    threads = _count_threads(client)
    if pieces is not None and (not isinstance(pieces, int) or pieces < 1):
        raise UsageError(f"pieces: {show(pieces)} is no number of pieces; use 1 to 100000")
    output = pathlib.Path(output).absolute()
    job = {"timeline": os.path.abspath(timeline), "output": str(output), "report": report,
           "keeps": options.pop("no_overwrite", False), "options": options, "pieces": pieces or 4 * threads}
    try:
        result, notes = _render_in_pieces(client, job, folder, retries, progress)
    except Exception as error:
        if client.status != "running" and not isinstance(error, Error):
            raise Error("the client lost its cluster before the render ended; connect again, and repeat it") from error
        raise
    for note in notes:
        warnings.warn(note, SonaroWarning, stacklevel=2)
    return result


def _render_in_pieces(client, job, folder, retries, progress):
    def submit(*call, **settings):
        return client.submit(_attempt, *call, pure=False, **settings)

    job["folder"], made = _take(submit(_make_folder, job["output"], folder and os.path.abspath(folder)))
    try:
        count = _take(submit(_plan, job, retries=retries))
        _wait([submit(_render_piece, job, number, retries=retries) for number in range(1, count + 1)], progress)
        return _take(submit(_join, job, retries=retries))
    finally:
        try:
            submit(_remove, job["folder"], made).result()
        except Exception:  # pylint: disable=broad-except
            # The cluster is gone.
            _remove(job["folder"], made)


def render_all(folder, client, output=None, *, retries=2, progress=None, table=None, format="wav", **options):
    """Renders all timelines of a folder, each by one worker, into files of their names.

    folder    its path, as workers reach it; folders in it are not looked into
    output    the folder of the files, by default the same; it is made where there is none. No file may replace a
              medium of any of the timelines
    retries   as of render
    progress  called with the timelines that are done, all of them, and the row of the one that was done last; what it
              raises ends the call, and no further timeline is begun
    table     a path to write the table to, as CSV
    format    wav, aiff, flac or caf
    options   those of sonaro.render, but for report and stems

    Returns a table: a dict for each timeline, in the order of names, with the keys timeline, output, status ("rendered"
    or "failed"), seconds (that it took), samples, loudness (in LUFS), true_peak (in dBTP), missing (how many media) and
    error, as COLUMNS has them. A timeline that fails is a row with its error, and the others go on. Loudness and true
    peak are those of the file. Raises an Error for what would let all of them fail.
    """
    _refuse("render_all", options, _NOT_FOR_ALL)
    _count_threads(client)
    output = os.path.abspath(output or folder)
    names = _take(client.submit(_attempt, _list_timelines, os.path.abspath(folder), output, pure=False))
    outputs = [os.path.join(output, f"{pathlib.Path(name).stem}.{format}") for name in names]
    doubles = {one for one in outputs if outputs.count(one) > 1}
    if doubles:
        raise UsageError(f"two timelines would be rendered into {sorted(doubles)[0]!r}; give them other names")
    if names:
        _take(client.submit(_attempt, _check_options, outputs[0], options, pure=False))
        tables = [os.path.abspath(table)] if table is not None else []
        _check_media(client, names, [*outputs, *tables], options.get("media"))
    with _begin_table(table) as file:
        futures = [client.submit(_attempt, _render_whole, name, one, options, pure=False, retries=retries)
                   for name, one in zip(names, outputs)]
        places = {future.key: place for place, future in enumerate(futures)}
        rows = [{} for _ in futures]

        def take(future, done):
            place = places[future.key]
            rows[place] = _make_row(names[place], outputs[place], future)
            if progress:
                progress(done, len(futures), rows[place])
        _follow(futures, take)
        _write_rows(rows, file)
    return rows


def write_table(rows, path):
    """Writes the rows of render_all as CSV. The file appears once it is complete."""
    with _begin_table(path) as file:
        _write_rows(rows, file)


def _write_rows(rows, file):
    if file is not None:
        writer = csv.DictWriter(file, COLUMNS)
        writer.writeheader()
        writer.writerows(rows)


@contextlib.contextmanager
def _begin_table(path):
    """A file that gets its name at the end. It is begun before the work, which would be lost for want of it."""
    if path is None:
        yield None
        return
    path = os.path.abspath(path)
    begun = os.path.join(os.path.dirname(path), f".{os.path.basename(path)}.{uuid.uuid4().hex}.tmp")
    try:
        if os.path.isdir(path):
            raise IsADirectoryError(0, "it is a folder")
        file = open(begun, "x", encoding="utf-8", newline="")
    except OSError as error:
        raise OutputError(f"cannot write the table {path!r}: {error.strerror}; choose another name") from None
    try:
        with file:
            yield file
        os.replace(begun, path)
    except BaseException:
        os.unlink(begun)
        raise


def _refuse(name, options, others):
    for option, why in others.items():
        if option in options:
            raise UsageError(f"farm.{name} has no option {option!r}: {why}")


def _count_threads(client):
    if client.status != "running":
        raise UsageError(f"the client is not connected to a cluster, its state is {client.status!r}; give one that is")
    return max(1, sum(client.nthreads().values()))


def _follow(futures, take):
    """Calls take with each future and the number of those that are done; what it raises ends the others."""
    from distributed import as_completed  # pylint: disable=import-outside-toplevel
    try:
        for done, future in enumerate(as_completed(futures), 1):
            take(future, done)
    except BaseException:
        for future in futures:
            future.cancel()
        raise


def _wait(futures, progress=None):
    def take(future, done):
        _take(future)
        if progress:
            progress(done, len(futures))
    _follow(futures, take)


def _take(future):
    """The result of an _attempt."""
    result, error = future.result()
    if error is not None:
        raise error
    return result


def _check_media(client, names, outputs, media):
    """Raises a UsageError for an output that is a medium of any timeline, or one of them."""
    real = _take(client.submit(_attempt, _find_files, outputs, pure=False))
    folders = sorted({os.path.dirname(path) for path in real})
    futures = [client.submit(_attempt, _list_media, name, media, folders, pure=False) for name in names]
    _wait(futures)
    for name, future in zip(names, futures):
        taken = _take(future)
        for path, output in zip(real, outputs):
            if path in taken:
                raise UsageError(f"the output {str(output)!r} is the timeline {name!r} or a media file of it; choose "
                                 "another folder or name")


# What follows runs on workers.

def _attempt(function, *arguments):
    """What a function returns, and None; or None and an error that would come again, which Dask would try again."""
    try:
        return function(*arguments), None
    except (UsageError, InputError) as error:
        return None, error


def _make_folder(output, folder):
    """A folder for pieces, and the folders above it that were made for it, the innermost first."""
    parent = pathlib.Path(folder or os.path.dirname(output))
    made = [str(path) for path in (parent, *parent.parents) if not path.exists()] if folder else []
    try:
        if folder:
            parent.mkdir(parents=True, exist_ok=True)
        elif not parent.exists():
            raise OutputError(f"cannot write {output!r}: the folder {str(parent)!r} does not exist; create it first")
        return tempfile.mkdtemp(prefix=f".{os.path.basename(output)}.", suffix=".pieces", dir=parent), made
    except OSError as error:
        raise OutputError(f"cannot make a folder for pieces in {str(parent)!r}: {error.strerror}; give another one "
                          "with folder") from None


def _remove(folder, made):
    shutil.rmtree(folder, ignore_errors=True)
    with contextlib.suppress(OSError):
        for path in made:
            os.rmdir(path)


def _get_plan(job):
    return os.path.join(job["folder"], "plan.json")


def _plan(job):
    import json  # pylint: disable=import-outside-toplevel
    options = {**job["options"], "pieces": job["pieces"], "output": _get_plan(job), "join_output": job["output"],
               "no_overwrite": job["keeps"], "quiet": True}
    if job["report"] is not False:
        options["track_levels"] = True
    # The join warns of the same.
    _run_strictly(job, "plan", [job["timeline"]], options, warn=lambda _: None)
    with open(_get_plan(job), encoding="utf-8") as file:
        return len(json.load(file)["pieces"])


def _run_strictly(job, command, inputs, options, **others):
    """Runs a command that reports only what strict refuses. The error has that report, which is written as well where
    the caller wants a file."""
    try:
        run(command, inputs, {**options, "report": "-"}, **others)
    except InputError as error:
        if error.report is not None and not isinstance(job["report"], bool):
            # Only the command can write a page.
            with contextlib.suppress(InputError):
                run(command, inputs, {**options, "report": os.path.abspath(job["report"])}, warn=lambda _: None)
        raise


def _get_media(job):
    return {"media": job["options"]["media"]} if "media" in job["options"] else {}


def _render_piece(job, number):
    piece = os.path.join(job["folder"], f"piece{number}.wav")
    _run_strictly(job, "render", [f"{_get_plan(job)}#{number}"],
                  {"piece": True, "output": piece, "jobs": 1, "quiet": True, **_get_media(job)})


def _join(job):
    report = job["report"]
    options = {"output": job["output"], "no_overwrite": job["keeps"], "quiet": True, **_get_media(job)}
    if report is True:
        options["report"] = "-"
    else:
        options["json"] = True
        if report is not False:
            options["report"] = os.path.abspath(report)
    notes = []
    result, _ = run("join", [_get_plan(job)], options, warn=notes.append)
    return result, notes


def _list_timelines(folder, output):
    try:
        names = sorted(str(path) for path in pathlib.Path(folder).iterdir() if path.suffix.lower() in TIMELINES)
    except OSError as error:
        raise InputError(f"{folder!r}: cannot be read: {error.strerror}; give a folder of timelines",
                         file=folder) from None
    try:
        os.makedirs(output, exist_ok=True)
    except OSError as error:
        raise OutputError(f"cannot make the folder {output!r}: {error.strerror}; choose another name",
                          file=output) from None
    return names


def _check_options(output, options):
    """Raises a UsageError for options that are wrong for any timeline. One without sound is not rendered."""
    with contextlib.suppress(InputError, OutputError):
        _render_whole(_Empty(), output, options)


class _Empty:
    @staticmethod
    def to_json_string():
        return '{"OTIO_SCHEMA": "Timeline.1", "tracks": {"OTIO_SCHEMA": "Stack.1", "children": []}}'


def _find_files(paths):
    return [os.path.realpath(path) for path in paths]


def _list_media(timeline, media, folders):
    """The timeline and its media, by their real paths, as far as they lie in the folders."""
    clips = []
    with contextlib.suppress(Error):
        options = {"json": True} if media is None else {"json": True, "media": media}
        clips = run("info", [timeline], options, warn=lambda _: None)[0]["clips"]
    paths = {os.path.realpath(path) for path in [timeline, *(clip.get("media") for clip in clips)] if path}
    return {path for path in paths if os.path.dirname(path) in folders}


def _render_whole(timeline, output, options):
    begin = time.monotonic()
    result, _ = run("render", [timeline], {"jobs": 1, **options, "output": output, "json": True, "quiet": True})
    return result, time.monotonic() - begin


def _make_row(timeline, output, future):
    row = {**dict.fromkeys(COLUMNS), "timeline": timeline, "output": output}
    try:
        result, row["seconds"] = _take(future)
    except Error as error:
        return {**row, "status": "failed", "error": str(error)}
    except Exception as error:  # pylint: disable=broad-except
        # A worker that was lost again and again, or that lacks the package.
        return {**row, "status": "failed", "error": f"{type(error).__name__}: {error}"}
    file = result["outputs"][0]
    return {**row, "status": "rendered", "samples": file["samples"], "loudness": file.get("integratedLufs"),
            "true_peak": file.get("truePeakDbtp"), "missing": len(result["missing"])}
