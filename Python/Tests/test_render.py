"""render does what the command does: the same files, reports, warnings and errors."""
import json
import os
import pickle
import signal
import threading
import warnings

import pytest
import sonaro

from timelines import RandomTimeline, clip, read_wave, timeline, track

# Of the time that it took.
VARYING = {"elapsedSeconds", "realTimeFactor"}


def steady(report):
    return {key: value for key, value in report.items() if key not in VARYING}


@pytest.mark.parametrize("options, arguments", [
    ({}, []),
    ({"normalize": -16, "limit_dbtp": -1.5, "bits": 24, "dither": "tpdf"},
     ["--normalize", "-16", "--limit-dbtp", "-1.5", "--bits", "24", "--dither", "tpdf"]),
    ({"range": (1.5, 2), "fade_in": 0.00001, "binaural": True, "yaw": -20.5, "keep_pitch": False},
     ["--range", "1.5+2", "--fade-in", "0.00001", "--binaural", "--yaw", "-20.5"]),
    ({"stems": "track", "range": "Conversation", "rate": 44100}, ["--stems", "track", "--range", "Conversation",
                                                                  "--rate", "44100"]),
])
def test_files_and_reports_are_those_of_the_command(edit, command, tmp_path, monkeypatch, options, arguments):
    name = "stems" if "stems" in options else "mix.wav"
    for folder in ("ours", "theirs"):
        (tmp_path / folder).mkdir()
    monkeypatch.chdir(tmp_path / "theirs")
    code, _, errors = command("render", edit, "-o", name, "--report", "report.json", *arguments)
    assert code == 0, errors
    monkeypatch.chdir(tmp_path / "ours")
    report = sonaro.render(edit, name, **options)
    files = sorted(path.relative_to(tmp_path / "ours") for path in (tmp_path / "ours").rglob("*") if path.is_file())
    assert files
    for file in files:
        assert (tmp_path / "ours" / file).read_bytes() == (tmp_path / "theirs" / file).read_bytes(), file
    assert steady(report) == steady(json.loads((tmp_path / "theirs" / "report.json").read_text()))


def test_sound_files_and_effects_are_rendered_as_well(examples, command, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    voice, music = examples / "Media" / "dialogue.flac", examples / "Media" / "music.flac"
    report = sonaro.render([voice, music], "ours.wav", at=[0, 0.25], layout="stereo", report=False)
    code, text, _ = command("render", voice, music, "-o", "theirs.wav", "--at", "0", "--at", "0.25", "--layout",
                            "stereo", "--json")
    assert code == 0
    assert (tmp_path / "ours.wav").read_bytes() == (tmp_path / "theirs.wav").read_bytes()
    theirs = json.loads(text)
    assert steady(report).keys() == steady(theirs).keys()
    with pytest.raises(sonaro.UsageError, match="--set: 'gain' is not a setting"):
        sonaro.render(voice, "no.wav", effect="urn:none", set="gain")
    with pytest.raises(sonaro.Error, match="urn:none"):
        sonaro.render(voice, "no.wav", effect=[("urn:none", {"gain": 6.0, "preset": "loud"})])


def test_random_timelines_are_the_same_by_both(command, media, tmp_path, in_memory):
    for seed in range(int(os.environ.get("SONARO_TRIALS", "12"))):
        content = RandomTimeline(seed).make()
        path = media / "random.otio"
        path.write_text(json.dumps(content))
        _, _, errors = command("render", path, "-o", tmp_path / "theirs.wav", "--report", tmp_path / "theirs.json")
        theirs = json.loads((tmp_path / "theirs.json").read_text()) if (tmp_path / "theirs.json").exists() else None
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", sonaro.SonaroWarning)
            try:
                ours = sonaro.render(in_memory(content), tmp_path / "ours.wav", base=media)
            except sonaro.Error as error:
                assert theirs is None, (seed, error)
                assert str(error).replace("<timeline>", "random") in errors, seed
                continue
        assert theirs is not None, (seed, errors)
        assert (tmp_path / "ours.wav").read_bytes() == (tmp_path / "theirs.wav").read_bytes(), seed
        (tmp_path / "theirs.json").unlink()
        for report in (ours, theirs):
            del report["input"], report["outputs"][0]["path"]
        assert steady(ours) == steady(theirs), seed


def test_reports_are_written_where_they_are_asked_for(edit, tmp_path):
    mix = tmp_path / "mix.wav"
    report = sonaro.render(edit, mix, range=(0, 1), report=tmp_path / "mix.json")
    assert report == json.loads((tmp_path / "mix.json").read_text())
    assert report["clips"] and report["tracks"]
    summary = sonaro.render(edit, mix, range=(0, 1), report=tmp_path / "mix.html")
    assert "clips" not in summary and summary["outputs"]
    assert "<svg" in (tmp_path / "mix.html").read_text()
    assert "clips" not in sonaro.render(edit, mix, range=(0, 1), report=False)


def test_media_that_are_missing_are_warned_of(tmp_path, in_memory, media):
    content = in_memory(timeline([track("one", [clip("here", "a.wav", 0, 100), clip("gone", "gone.wav", 0, 100)])]))
    with pytest.warns(sonaro.SonaroWarning, match="gone.wav' does not exist .*; pass its folder") as caught:
        report = sonaro.render(content, tmp_path / "mix.wav", base=media)
    assert caught[0].filename == __file__
    assert [entry["clip"] for entry in report["missing"]] == ["gone"]
    (tmp_path / "mix.wav").unlink()
    with pytest.warns(sonaro.SonaroWarning), pytest.raises(sonaro.InputError, match="1 clip has no media") as caught:
        sonaro.render(content, tmp_path / "mix.wav", base=media, strict="media")
    assert caught.value.report["refused"] == "1 clip has no media"
    assert not (tmp_path / "mix.wav").exists()


ERRORS = [
    # what the timeline or option is, and the exception's type, file, pointer, remedy and part of its text
    ({"OTIO_SCHEMA": "Timeline.1", "tracks": {"OTIO_SCHEMA": "Clip.2"}}, {}, sonaro.InputError,
     ("<timeline>.otio", "/tracks", None, "\"tracks\" of a timeline must be one")),
    ("{", {}, sonaro.InputError, ("<timeline>.otio", None, None, "line 1")),
    (timeline([track("none", [])]), {}, sonaro.InputError, ("<timeline>.otio", "/tracks", None, "has no length")),
    (timeline([dict(track("picture", [clip("p", "a.wav", 0, 100)]), kind="Video")]), {}, sonaro.NothingHeardError,
     ("<timeline>.otio", "/tracks", None, "nothing in this timeline is heard")),
    (timeline([track("t", [clip("c", "a.wav", 0, 100)])]), {"normalise": -16}, sonaro.UsageError,
     (None, None, None, "did you mean --normalize?")),
    (timeline([track("t", [clip("c", "a.wav", 0, 100)])]), {"gain_db": 300}, sonaro.UsageError,
     (None, None, None, "--gain-db: 300 is out of range; use -200 to 200")),
    (timeline([track("t", [clip("c", "a.wav", 0, 100)])]), {"fade_in": "soon"}, sonaro.UsageError,
     (None, None, None, "--fade-in: 'soon' is not a time")),
]


@pytest.mark.parametrize("content, options, kind, parts", ERRORS)
def test_errors_name_the_file_the_place_and_the_remedy(media, tmp_path, in_memory, content, options, kind, parts):
    with pytest.raises(kind) as caught:
        sonaro.render(in_memory(content), tmp_path / "mix.wav", base=media, **options)
    error = caught.value
    file, pointer, remedy, text = parts
    assert (error.file and os.path.basename(error.file), error.pointer, error.remedy) == (file, pointer, remedy)
    assert text in str(error)
    assert os.listdir(tmp_path) == []
    copy = pickle.loads(pickle.dumps(error))
    assert (type(copy), str(copy), copy.__dict__) == (type(error), str(error), error.__dict__)


def test_outputs_that_cannot_be_written_are_errors_of_theirs(edit, tmp_path):
    with pytest.raises(sonaro.OutputError) as caught:
        sonaro.render(edit, tmp_path / "nowhere" / "mix.wav")
    assert "nowhere" in str(caught.value)
    (tmp_path / "mix.wav").write_text("precious")
    with pytest.raises(sonaro.OutputError, match="already exists"):
        sonaro.render(edit, tmp_path / "mix.wav", no_overwrite=True)
    assert (tmp_path / "mix.wav").read_text() == "precious"
    for output in ("-", b"-"):
        with pytest.raises(sonaro.UsageError, match="standard output"):
            sonaro.render(edit, output)
    with pytest.raises(TypeError, match="nothing is printed"):
        sonaro.render(edit, tmp_path / "mix.wav", quiet=True)


def long_timeline(in_memory):
    """Half an hour of 1000 clips."""
    return in_memory(timeline([track("long", [clip(str(i), "c.wav", 10 * (i % 100), 1800) for i in range(1000)])]))


def test_a_render_ends_when_it_is_cancelled_or_its_callback_raises(media, tmp_path, in_memory):
    cancel = sonaro.Cancel()
    steps = []

    def follow(done, total):
        steps.append((done, total))
        threading.Thread(target=cancel.cancel).start()

    (tmp_path / "mix.wav").write_text("before")
    with pytest.raises(sonaro.Cancelled):
        sonaro.render(long_timeline(in_memory), tmp_path / "mix.wav", base=media, progress=follow, cancel=cancel)
    assert cancel.cancelled
    assert 0 < steps[0][0] < steps[0][1]
    with pytest.raises(sonaro.Cancelled):
        sonaro.render(long_timeline(in_memory), tmp_path / "mix.wav", base=media, cancel=cancel)
    with pytest.raises(ZeroDivisionError):
        sonaro.render(long_timeline(in_memory), tmp_path / "mix.wav", base=media, progress=lambda *_: 1 / 0)
    assert os.listdir(tmp_path) == ["mix.wav"]
    assert (tmp_path / "mix.wav").read_text() == "before"


def test_an_interrupt_ends_a_render_and_leaves_nothing(media, tmp_path, in_memory):
    before = signal.getsignal(signal.SIGINT)
    with pytest.raises(KeyboardInterrupt):
        sonaro.render(long_timeline(in_memory), tmp_path / "mix.wav", base=media,
                      progress=lambda *_: os.kill(os.getpid(), signal.SIGINT))
    assert os.listdir(tmp_path) == []
    assert signal.getsignal(signal.SIGINT) is before


def test_threads_render_at_once_and_print_nothing(edit, tmp_path, capfd):
    reports = {}

    def run(number):
        reports[number] = sonaro.render(edit, tmp_path / f"{number}.wav", gain_db=-number, range=(0, 3), report=False)

    threads = [threading.Thread(target=run, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    loudest = [abs(read_wave(tmp_path / f"{number}.wav")).max() for number in range(4)]
    assert sorted(loudest, reverse=True) == loudest and len(set(loudest)) == 4
    assert len(reports) == 4
    assert capfd.readouterr() == ("", "")
