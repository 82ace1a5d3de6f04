"""The stubs say what the package takes: the options of the command, and the types."""
import ast
import pathlib
import re
import shutil
import subprocess
import sys

import pytest
import sonaro

STUBS = pathlib.Path(sonaro.__file__).parent

USE = """
import numpy
import sonaro

report = sonaro.render("edit.otio", "mix.wav", normalize=-16, range=(1, 2.5), media=["a"], strict="media")
with sonaro.open("edit.otio", rate=48000) as timeline:
    samples = timeline.read(0, 10, timeline.tracks[0])
    total: float = float(samples.sum()) + timeline.duration
    place: str = timeline.notes[0].place
with sonaro.open(sonaro.Sequence([sonaro.Track([])])) as opened:
    opened.blocks(10)
sonaro.Sequence().open(readers=2).read(0, 10).sum()
sonaro.Sequence().read(0, 10).sum()
series = sonaro.loudness(numpy.zeros(10), 48000)["series"]
"""

WRONG = """
sonaro.render(1, "a")
sonaro.render("a", "b", normalise=-16)
timeline.nothing
"""


def test_render_has_the_options_of_the_command(command):
    text = command("render", "--help")[1]
    theirs = {name.replace("-", "_") for name in re.findall(r"^\s+(?:-\w,)?--([a-z][a-z-]*)", text, re.MULTILINE)}
    stub = (STUBS / "_render.pyi").read_text()
    ours = set(re.findall(r"^    (\w+):", stub[stub.index("def render"):], re.MULTILINE))
    assert theirs - {"help", "output", "quiet", "json", "piece"} == ours - {"timeline", "output", "base", "progress", "cancel"}


def test_the_syntax_is_that_of_the_oldest_python():
    for path in [*STUBS.glob("*.py"), *STUBS.glob("*.pyi")]:
        ast.parse(path.read_text(encoding="utf-8"), str(path), feature_version=(3, 9))


@pytest.mark.skipif(not shutil.which("mypy"), reason="needs mypy")
@pytest.mark.parametrize("code, count, version", [(USE, 0, sys.version_info[1]), (USE + WRONG, 3, 9)])
def test_types_are_checked(tmp_path, code, count, version):
    (tmp_path / "use.py").write_text(code)
    done = subprocess.run(["mypy", "--strict", "--python-version", f"3.{version}", "--cache-dir",
                           tmp_path / "cache", tmp_path / "use.py"], capture_output=True, text=True, check=False,
                          cwd=tmp_path, env={"MYPYPATH": str(STUBS.parent), "PATH": "/usr/bin:/bin"})
    errors = [line for line in done.stdout.splitlines() if "use.py" in line and "error" in line]
    assert len(errors) == count, done.stdout
