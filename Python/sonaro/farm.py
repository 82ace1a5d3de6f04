"""Renders timelines on a cluster, by Dask distributed (python3-distributed).

Workers run this package, and reach timelines, media and outputs by the same paths, or media through the folders of the
option media. The client itself reads and writes none of them.
"""
import csv
import os
import pathlib
import shutil
import tempfile
import time

from ._command import run
from ._errors import Error, UsageError

TIMELINES = (".otio", ".otioz", ".otiod")
COLUMNS = ("timeline", "output", "status", "seconds", "samples", "loudness", "true_peak", "missing", "error")


def render(timeline, output, client, *, pieces=None, report=True, folder=None, retries=2, progress=None, **options):
    """Renders one timeline in pieces, on all workers of a cluster, to the bytes that one render would write.

    timeline  its path, as workers reach it
    output    the path of the file; it appears once it is complete
    client    a distributed.Client
    pieces    how many; by default four for each thread of the cluster. Pieces cost about the same, so a few for each
              thread keep all of them busy to the end. Effects that remember all that came before make it one
    report    True for all that the command's --report says, for which pieces carry what the meters of tracks hear;
              False for the summary alone; a path to write the report there as well
    folder    where pieces lie meanwhile, for all workers to reach; by default beside the output. It is made where there is
              none, and what was made is removed at the end
    retries   how often a piece is begun again after an error; those of workers that are lost begin again anyway
    progress  called with the pieces that are done and all of them
    options   those of the command "sonaro plan" by their names, as of sonaro.render

    Returns the report as sonaro.render does. Raises an Error.
    """
    output = pathlib.Path(output).absolute()
    job = {"timeline": os.path.abspath(timeline), "output": str(output), "report": report, "options": options,
           "pieces": pieces or 4 * max(1, sum(client.nthreads().values()))}
    job["folder"] = client.submit(_make_folder, str(folder or output.parent), output.name, pure=False).result()
    try:
        count = client.submit(_plan, job, pure=False, retries=retries).result()
        _wait([client.submit(_render_piece, job, number, pure=False, retries=retries)
               for number in range(1, count + 1)], progress)
        return client.submit(_join, job, pure=False, retries=retries).result()
    finally:
        client.submit(shutil.rmtree, job["folder"], ignore_errors=True, pure=False).result()


def render_all(folder, client, output=None, *, retries=2, progress=None, table=None, format="wav", **options):
    """Renders all timelines of a folder, each by one worker, into files of their names.

    folder    its path, as workers reach it; folders in it are not looked into
    output    the folder of the files, by default the same; it is made where there is none
    progress  called with the timelines that are done, all of them, and the row of the one that was done last
    table     a path to write the table to, as CSV
    format    wav, aiff, flac or caf
    options   those of sonaro.render

    Returns a table: a dict for each timeline, in the order of names, with the keys timeline,
    output, status ("rendered" or "failed"), seconds (that it took), samples, loudness (in LUFS), true_peak (in dBTP),
    missing (how many media) and error. A timeline that fails is a row with its error, and the others go on.
    """
    output = os.path.abspath(output or folder)
    names = client.submit(_list_timelines, os.path.abspath(folder), output, pure=False).result()
    outputs = [os.path.join(output, f"{pathlib.Path(name).stem}.{format}") for name in names]
    doubles = {one for one in outputs if outputs.count(one) > 1}
    if doubles:
        raise UsageError(f"two timelines would be rendered into {sorted(doubles)[0]!r}; give them other names")
    futures = [client.submit(_render_whole, name, file, options, pure=False, retries=retries)
               for name, file in zip(names, outputs)]
    places = {future.key: place for place, future in enumerate(futures)}
    rows = [{} for _ in futures]
    for done, future in enumerate(_complete(futures), 1):
        place = places[future.key]
        rows[place] = _make_row(names[place], outputs[place], future)
        if progress:
            progress(done, len(futures), rows[place])
    if table is not None:
        write_table(rows, table)
    return rows


def write_table(rows, path):
    """Writes the rows of render_all as CSV."""
    with open(path, "w", encoding="utf-8", newline="") as file:
        writer = csv.DictWriter(file, COLUMNS)
        writer.writeheader()
        writer.writerows(rows)


def _complete(futures):
    from distributed import as_completed  # pylint: disable=import-outside-toplevel
    return as_completed(futures)


def _wait(futures, progress):
    """Until all are done; the first error ends the others."""
    try:
        for done, future in enumerate(_complete(futures), 1):
            future.result()
            if progress:
                progress(done, len(futures))
    except BaseException:
        for future in futures:
            future.cancel()
        raise


# What follows runs on workers.

def _make_folder(parent, name):
    os.makedirs(parent, exist_ok=True)
    return tempfile.mkdtemp(prefix=f".{name}.", suffix=".pieces", dir=parent)


def _get_plan(job):
    return os.path.join(job["folder"], "plan.json")


def _plan(job):
    import json  # pylint: disable=import-outside-toplevel
    options = {**job["options"], "pieces": job["pieces"], "output": _get_plan(job), "quiet": True}
    if job["report"] is not False:
        options["track_levels"] = True
    run("plan", [job["timeline"]], options)
    with open(_get_plan(job), encoding="utf-8") as file:
        return len(json.load(file)["pieces"])


def _get_media(job):
    return {"media": job["options"]["media"]} if "media" in job["options"] else {}


def _render_piece(job, number):
    piece = os.path.join(job["folder"], f"piece{number}.wav")
    run("render", [f"{_get_plan(job)}#{number}"],
        {"piece": True, "output": piece, "jobs": 1, "json": True, "quiet": True, **_get_media(job)})


def _join(job):
    report = job["report"]
    options = {"output": job["output"], "quiet": True, **_get_media(job)}
    if report is True:
        options["report"] = "-"
    else:
        options["json"] = True
        if report is not False:
            options["report"] = os.path.abspath(report)
    return run("join", [_get_plan(job)], options)[0]


def _list_timelines(folder, output):
    os.makedirs(output, exist_ok=True)
    return sorted(str(path) for path in pathlib.Path(folder).iterdir() if path.suffix.lower() in TIMELINES)


def _render_whole(timeline, output, options):
    begin = time.monotonic()
    result, _ = run("render", [timeline], {"jobs": 1, **options, "output": output, "json": True, "quiet": True})
    return result, time.monotonic() - begin


def _make_row(timeline, output, future):
    row = {**dict.fromkeys(COLUMNS), "timeline": timeline, "output": output}
    try:
        result, row["seconds"] = future.result()
    except Error as error:
        return {**row, "status": "failed", "error": str(error)}
    except Exception as error:  # pylint: disable=broad-except
        # A worker that was lost again and again, or that lacks the package.
        return {**row, "status": "failed", "error": f"{type(error).__name__}: {error}"}
    file = result["outputs"][0]
    return {**row, "status": "rendered", "samples": file["samples"], "loudness": file.get("integratedLufs"),
            "true_peak": file.get("truePeakDbtp"), "missing": len(result["missing"])}
