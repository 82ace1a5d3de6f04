"""open: any read has the samples of the file that render writes."""
import random
import threading

import numpy
import pytest
import sonaro

from timelines import RandomTimeline, clip, read_wave, speed, timeline, track


def test_facts_are_those_of_the_timeline(edit):
    with sonaro.open(edit) as opened:
        assert (opened.rate, opened.layout, opened.channels, opened.name) == (48000, "stereo", 2, "The last boat")
        assert opened.duration == opened.frames / 48000
        assert [row.name for row in opened.tracks] == ["Dialogue", "Music", "Effects"]
        assert all(row.is_heard for row in opened.tracks)
        assert opened.read(0, 10).shape == (2, 10)
    with pytest.raises(sonaro.UsageError, match="closed"):
        opened.read(0, 10)
    opened = sonaro.open(edit, rate=22050, layout="mono")
    assert (opened.rate, opened.layout) == (22050, "mono")


@pytest.mark.filterwarnings("ignore:.*cannot pan")
@pytest.mark.parametrize("options", [{}, {"rate": 32000, "layout": "5.1"}, {"binaural": True, "yaw": 30},
                                     {"layout": "ambisonic1"}])
def test_reads_anywhere_have_the_samples_of_the_file(edit, tmp_path, options):
    sonaro.render(edit, tmp_path / "mix.wav", report=False, **options)
    mix = read_wave(tmp_path / "mix.wav")
    opened = sonaro.open(edit, **options)
    assert mix.shape == (opened.channels, opened.frames)
    choose = random.Random(2)
    for _ in range(40):
        start, frames = choose.randrange(-5000, opened.frames), choose.choice([0, 1, 1000, 4096, 20000])
        samples = opened.read(start, frames)
        assert samples.dtype == numpy.float32 and samples.shape == (opened.channels, frames)
        padded = numpy.pad(mix[:, max(start, 0):start + frames], ((0, 0), (max(-start, 0), 0)))[:, :frames]
        padded = numpy.pad(padded, ((0, 0), (0, frames - padded.shape[1])))
        assert samples.tobytes() == padded.tobytes(), (start, frames)


def test_tracks_are_read_alone_as_stems_have_them(edit, tmp_path):
    report = sonaro.render(edit, tmp_path / "stems", stems="track", report=False)
    opened = sonaro.open(edit)
    assert len(report["outputs"]) == len(opened.tracks) == 3
    for row, output in zip(opened.tracks, report["outputs"]):
        stem = numpy.concatenate(list(opened.blocks(30000, row.name)), axis=1)
        path = tmp_path / "stems" / output["path"].rsplit("/", 1)[-1]
        assert stem.tobytes() == numpy.ascontiguousarray(read_wave(path)).tobytes(), row.name
        assert (opened.read(9999, 50, row) == opened.read(9999, 50, row.number)).all()
    for track_name, text in (("Nobody", "no tracks are called 'Nobody'"), (4, "there is no track 4"), (0, "track 0")):
        with pytest.raises(sonaro.UsageError, match=text):
            opened.read(0, 10, track_name)


@pytest.mark.filterwarnings("ignore::sonaro.SonaroWarning")
def test_random_timelines_are_read_as_they_are_rendered(media, tmp_path, in_memory):
    for seed in range(100, 108):
        content = in_memory(RandomTimeline(seed).make())
        try:
            sonaro.render(content, tmp_path / "mix.wav", base=media, report=False)
        except sonaro.NothingHeardError:
            continue
        mix = numpy.ascontiguousarray(read_wave(tmp_path / "mix.wav"))
        opened = sonaro.open(content, base=media)
        blocks = list(opened.blocks(random.Random(seed).randint(500, 9000)))
        assert numpy.concatenate(blocks, axis=1).tobytes() == mix.tobytes(), seed


def test_threads_read_at_once(edit):
    opened = sonaro.open(edit, readers=2)
    whole = opened.read(0, 200000)
    wrong = []

    def read(seed):
        choose = random.Random(seed)
        for _ in range(20):
            start = choose.randrange(190000)
            if (opened.read(start, 5000) != whole[:, start:start + 5000][:, :5000]).any():
                wrong.append(start)

    threads = [threading.Thread(target=read, args=(seed,)) for seed in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong


def test_notes_and_errors_have_their_places(media, in_memory):
    content = timeline([track("one", [clip("fast", "a.wav", 0, 500, effects=[speed(2.0)]),
                                      clip("gone", "gone.wav", 0, 100)], mystery=1)])
    opened = sonaro.open(in_memory(content), base=media)
    assert [entry["clip"] for entry in opened.missing] == ["gone"]
    assert any(note.kind == "ignored" and note.place == "/tracks/children/0/metadata/sonaro/mystery" for note in opened.notes)
    for options, kind, text in (({"layout": "7.2"}, sonaro.UsageError, "--layout: '7.2' is not a layout"),
                                ({"bits": 16}, sonaro.UsageError, "unknown option '--bits'"),
                                ({"rate": "x"}, sonaro.UsageError, "--rate: 'x' is not a whole number"),
                                ({"readers": 0}, sonaro.UsageError, "readers: 0")):
        with pytest.raises(kind, match=text):
            sonaro.open(in_memory(content), base=media, **options)
    with pytest.raises(sonaro.InputError, match="is no timeline; open accepts"):
        sonaro.open(media / "a.wav")
    with pytest.raises(sonaro.InputError) as caught:
        sonaro.open(media / "none.otio")
    assert caught.value.file == str(media / "none.otio")
