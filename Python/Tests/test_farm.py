"""Renders on a cluster of processes of this machine: the files and the reports are those of one render."""
import csv
import json
import os
import shutil
import signal
import time
import warnings

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


def test_errors_come_before_the_work_and_leave_nothing(client, media, tmp_path):
    edit = write(media, "error.otio", timeline([track("a", [clip("c", "b.wav", 0, 500)])]))
    (tmp_path / "old.wav").write_bytes(b"old")
    begun = []
    for kind, text, output, options in [
            (sonaro.UsageError, "--stems", "x.wav", {"stems": "track"}),
            (sonaro.UsageError, "'pieces'|pieces: 0", "x.wav", {"pieces": 0}),
            (sonaro.UsageError, "'cancel'", "x.wav", {"cancel": sonaro.Cancel()}),
            (sonaro.UsageError, "is the input itself", edit, {"format": "wav"}),
            (sonaro.UsageError, "media file", media / "b.wav", {}),
            (sonaro.UsageError, "x.xyz", "x.xyz", {}),
            (sonaro.UsageError, "floats", "x.flac", {"bits": "32f"}),
            (sonaro.OutputError, "already exists", "old.wav", {"no_overwrite": True}),
            (sonaro.OutputError, "create it first", "none/x.wav", {})]:
        with pytest.raises(kind, match=text):
            farm.render(edit, tmp_path / output, client, progress=lambda *done: begun.append(done), **options)
    with pytest.raises(sonaro.InputError, match="none.otio"):
        farm.render(media / "none.otio", tmp_path / "x.wav", client)
    assert [path.name for path in tmp_path.iterdir()] == ["old.wav"] and not begun
    assert (tmp_path / "old.wav").read_bytes() == b"old"


def test_folders_of_pieces_go_and_warnings_come_here(client, media, tmp_path):
    clips = [clip("c", "b.wav", 0, 500), clip("d", "no.wav", 0, 500)]
    edit = write(media, "lack.otio", timeline([track("a", clips)]))
    with pytest.warns(sonaro.SonaroWarning, match="no.wav") as warned:
        report = farm.render(edit, tmp_path / "x.wav", client, pieces=2, folder=tmp_path / "new" / "deep")
    assert len(warned) == 1 and len(report["missing"]) == 1
    assert [path.name for path in tmp_path.iterdir()] == ["x.wav"]


@pytest.mark.parametrize("medium, reason", [("gone.wav", "1 clip has no media"), ("damaged.flac", "truncated or damaged")])
def test_what_strict_refuses_is_reported_as_by_one_render(client, media, tmp_path, medium, reason):
    sound = write(media, "sound.otio", timeline([track("a", [clip("c", "b.wav", 0, 2900)])]))
    sonaro.render(sound, media / "damaged.flac")
    data = bytearray((media / "damaged.flac").read_bytes())
    data[len(data) // 2:len(data) // 2 + 5000] = bytes(5000)
    (media / "damaged.flac").write_bytes(data)
    edit = write(media, "strict.otio", timeline([track("a", [clip("c", medium, 0, 2900)])]))
    with pytest.raises(sonaro.InputError) as ours:
        farm.render(str(edit), tmp_path / "farm.wav", client, pieces=1, strict=True, report=tmp_path / "farm.json")
    with warnings.catch_warnings(), pytest.raises(sonaro.InputError) as theirs:
        warnings.simplefilter("ignore")
        sonaro.render(str(edit), tmp_path / "one.wav", strict=True)
    assert reason in ours.value.report["refused"] and str(ours.value) == str(theirs.value)
    assert ours.value.report == theirs.value.report == json.loads((tmp_path / "farm.json").read_text())
    assert [path.name for path in tmp_path.iterdir()] == ["farm.json"]


def test_what_ends_the_call_ends_the_work(client, media, tmp_path):
    for number in range(40):
        write(tmp_path, f"edit{number}.otio", timeline([track("a", [clip("c", "c.wav", 0, 2900)] * 20)]))

    def stop(*_):
        raise KeyboardInterrupt
    with pytest.raises(KeyboardInterrupt):
        farm.render_all(tmp_path, client, tmp_path / "mixes", media=[media], progress=stop)
    deadline = time.monotonic() + 60
    while any(client.processing().values()) and time.monotonic() < deadline:
        time.sleep(0.1)
    time.sleep(0.3)
    assert len(list((tmp_path / "mixes").glob("*.wav"))) < 20


def test_no_output_of_a_folder_replaces_what_another_timeline_reads(client, media, tmp_path):
    write(tmp_path, "scene.otio", timeline([track("a", [clip("c", str(media / "b.wav"), 0, 500)])]))
    write(tmp_path, "uses.otio", timeline([track("a", [clip("c", "scene.wav", 0, 500)])]))
    shutil.copy(media / "b.wav", tmp_path / "scene.wav")
    before = (tmp_path / "scene.wav").read_bytes()
    with pytest.raises(sonaro.UsageError, match="scene.wav.*uses.otio"):
        farm.render_all(tmp_path, client)
    with pytest.raises(sonaro.UsageError, match="uses.otio"):
        farm.render_all(tmp_path, client, tmp_path / "mixes", table=tmp_path / "uses.otio")
    assert (tmp_path / "scene.wav").read_bytes() == before
    for kind, folder, options in [
            (sonaro.InputError, tmp_path / "none", {}),
            (sonaro.OutputError, tmp_path, {"output": tmp_path / "scene.wav"}),
            (sonaro.OutputError, tmp_path, {"output": tmp_path / "mixes", "table": tmp_path / "none" / "x.csv"}),
            (sonaro.UsageError, tmp_path, {"output": tmp_path / "mixes", "nonsense": 3}),
            (sonaro.UsageError, tmp_path, {"output": tmp_path / "mixes", "normalize": 5}),
            (sonaro.UsageError, tmp_path, {"output": tmp_path / "mixes", "report": "r.json"})]:
        with pytest.raises(kind):
            farm.render_all(folder, client, **options)
    assert not list((tmp_path / "mixes").iterdir())
