"""Renders on a cluster of processes of this machine: the files and the reports are those of one render."""
import csv
import json
import os
import signal

import pytest
import sonaro
from sonaro import farm
from timelines import RandomTimeline, clip, timeline, track

distributed = pytest.importorskip("distributed")


@pytest.fixture(scope="module")
def client():
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, \
            distributed.Client(cluster) as one:
        yield one


def write(folder, name, content):
    (folder / name).write_text(json.dumps(content))
    return folder / name


def strip(report):
    for key in ("elapsedSeconds", "realTimeFactor"):
        report.pop(key)
    report["outputs"][0].pop("path")
    return report


def test_pieces_give_the_file_and_the_report_of_one_render(client, media, tmp_path):
    edit = write(media, "farm.otio", RandomTimeline(3).make())
    options = {"normalize": -20, "limit_dbtp": -9, "bits": 16, "block": 512}
    seen = []
    report = farm.render(edit, tmp_path / "farm.wav", client, pieces=5, progress=lambda *done: seen.append(done),
                         **options)
    one = sonaro.render(str(edit), tmp_path / "one.wav", **options)
    assert (tmp_path / "farm.wav").read_bytes() == (tmp_path / "one.wav").read_bytes()
    assert strip(report) == strip(one)
    assert seen == [(done, 5) for done in range(1, 6)]
    assert sorted(path.name for path in tmp_path.iterdir()) == ["farm.wav", "one.wav"]


def test_a_lost_worker_changes_nothing(client, media, tmp_path):
    edit = write(media, "lost.otio", timeline([track("a", [clip("c", "c.wav", 0, 2900)] * 40)]))
    victims = list(client.run(os.getpid).values())

    def kill(done, _):
        if done == 2:
            os.kill(victims[0], signal.SIGKILL)
    report = farm.render(edit, tmp_path / "farm.wav", client, pieces=12, report=False, progress=kill, rate=48000)
    sonaro.render(str(edit), tmp_path / "one.wav", rate=48000)
    assert (tmp_path / "farm.wav").read_bytes() == (tmp_path / "one.wav").read_bytes()
    assert report["missing"] == []


def test_all_of_a_folder_come_in_one_table(client, media, tmp_path):
    for seed in (1, 2):
        write(tmp_path, f"edit{seed}.otio", timeline([track("a", [clip("c", "b.wav", 0, 500 * seed)])]))
    (tmp_path / "broken.otio").write_text("{")
    rows = farm.render_all(tmp_path, client, tmp_path / "mixes", format="flac", retries=0, media=[media],
                           table=tmp_path / "mixes.csv")
    assert [row["status"] for row in rows] == ["failed", "rendered", "rendered"]
    assert "broken.otio" in rows[0]["error"]
    assert [row["samples"] for row in rows[1:]] == [24000, 48000] and rows[1]["missing"] == 0
    with open(tmp_path / "mixes.csv", encoding="utf-8", newline="") as file:
        assert [row["output"] for row in csv.DictReader(file)] == [row["output"] for row in rows]
    assert sorted(path.name for path in (tmp_path / "mixes").iterdir()) == ["edit1.flac", "edit2.flac"]


def test_errors_and_options_are_those_of_the_command(client, media, tmp_path):
    edit = write(media, "error.otio", timeline([track("a", [clip("c", "b.wav", 0, 500)])]))
    with pytest.raises(sonaro.UsageError, match="--stems cannot be planned"):
        farm.render(edit, tmp_path / "x.wav", client, retries=0, stems="track")
    with pytest.raises(sonaro.InputError, match="none.otio"):
        farm.render(media / "none.otio", tmp_path / "x.wav", client, retries=0)
    assert not list(tmp_path.iterdir())
