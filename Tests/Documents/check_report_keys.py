#!/usr/bin/env python3
"""The page of reports has every key of reports, and no other: those of reports that are made here of several kinds of
input, and those that the program's sources name. Usage: check_report_keys.py COMMAND"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "Examples"
MEDIA = EXAMPLES / "Media"


def list_keys(value):
    if isinstance(value, list):
        return {key for part in value for key in list_keys(part)}
    if isinstance(value, dict):
        return set(value).union(*(list_keys(part) for part in value.values()))
    return set()


def make_reports(command, folder):
    edit, music = EXAMPLES / "Timeline" / "edit.otio", MEDIA / "music.flac"
    lost = folder / "lost.otio"
    lost.write_text(edit.read_text().replace("../Media/music", "nowhere/music"))
    inputs = [
        [edit, "--normalize", "-20", "--limit-dbtp", "-1", "--binaural"], [edit, "--stems", "marker", "-o", folder / "stems"],
        [lost, "--media", MEDIA], [lost, "--strict"], [music, MEDIA / "dialogue.flac", "--as-playback"],
        [music, "--denoise", "--duration", "2"]]
    for options in inputs:
        output = [] if "-o" in options else ["-o", folder / "out.wav"]
        done = subprocess.run([command, "render", *options, *output, "--report", folder / "report.json", "--quiet"],
                              stderr=subprocess.PIPE, text=True, check=False)
        assert done.returncode in (0, 1, 3), done.stderr
        yield json.loads((folder / "report.json").read_text())
    for options in ([edit], [music, "--duration", "0.1"]):
        yield json.loads(subprocess.run([command, "loudness", *options, "--json"], capture_output=True, check=False).stdout)


def main():
    page = (ROOT / "Docs/reference/report.md").read_text()
    documented = set(re.findall(r"`([a-z]\w*)`", page))
    sources = "".join(path.read_text() for path in (ROOT / "Host/Command/Report").glob("*.cpp"))
    with tempfile.TemporaryDirectory() as folder:
        written = set().union(*(list_keys(report) for report in make_reports(sys.argv[1], pathlib.Path(folder))))
    # What the first columns of tables list are keys.
    listed = {key for row in re.findall(r"^\| (`.*?) \|", page, re.MULTILINE) for key in re.findall(r"`(\w+)`", row)}
    lacking = sorted(written - documented)
    invented = sorted(key for key in listed if f'"{key}"' not in sources)
    if lacking or invented:
        sys.exit(f"Docs/reference/report.md lacks {lacking}, and lists {invented}, which no report has")
    print(f"{len(written)} keys of reports are documented")


main()
