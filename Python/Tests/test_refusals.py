"""What makes no sense is refused by name and place, before anything is written."""
import os

import numpy
import pytest
import sonaro
from sonaro import (Clip, Crossfade, Curve, Effect, Fader, Item, Media, Multicam, Nest, Send, Sequence, Submix,
                    Track)

RATE = 48000
ONES = Media(numpy.ones((1, RATE)), RATE, name="ones")


def one(content=None, **more):
    """A second track with an item of these settings."""
    return Sequence([Track(), Track([Item(content or Clip(ONES), **{"start": 0, "end": 0.5, **more})], "Boom")])


def play(function, **more):
    return one(Clip(Media(function, RATE, **{"channels": 1, "frames": RATE, "name": "made", **more})))


def circle(levels):
    sequence = one()
    for _ in range(levels):
        sequence = one(Nest(sequence))
    return sequence


BAD = [
    # names
    (lambda: one(name=None), "track 2 'Boom', item 1, name: None is no text"),
    (lambda: Sequence([Track(name="\ud800")]), "track 1, name: .* half a character"),
    (lambda: one(stages=[Effect(None)]), "item 1, stage 1, uri: None is no text"),
    (lambda: one(stages=[Effect("urn:none")]), 'track 2 .Boom., item 1, stage 1: the plugin "urn:none" is not installed'),
    # numbers
    (lambda: one(Clip(ONES, start=10**30)), "item 1, start of the clip: 1000"),
    (lambda: one(Clip(ONES, channels=[-1])), "item 1, channels: -1 is out of range; use a whole number from 0 to 63"),
    (lambda: one(Multicam([one()], first_angle=-1)), "first_angle: -1 is out of range"),
    (lambda: one(Clip(Media("a.wav", stream="x"))), "media 'media', stream: 'x' is out of range"),
    (lambda: one(Clip(Media("a\0.wav"))), "NUL"),
    (lambda: one(fade_in=-1), "item 1, fade_in: a length of -1 seconds is out of range"),
    (lambda: one(pan=-1), "item 1, pan: -1 is out of range; use 0 to 1"),
    (lambda: Sequence([Track(crossfades=[Crossfade(0, -1, 1)])]), "track 1, crossfade 1: a length of -1"),
    (lambda: Sequence([Track(mute="no")]), "track 1, mute: 'no' is neither True nor False"),
    (lambda: Sequence(rate=float("nan")), "rate: nan is out of range"),
    (lambda: Sequence(duration=1e9), "duration: 1000000000.0 is out of range; use 0 to 180000"),
    (lambda: Sequence(tracks=None), "tracks: None is no list"),
    (lambda: Sequence([None]), "tracks: None is no Track"),
    # curves
    (lambda: one(speed=Curve([(0, 1), (0.0, 2)])), "item 1, speed: two points of the curve are at one time"),
    (lambda: one(stages=[Fader(Curve([(0, 1e5)], scale="decibels"))]), "point 1 of the curve: 100000.0 is out of range"),
    (lambda: one(stages=[Fader(Curve([(0, 1), (1, float("nan"))]))]), "point 2 of the curve: nan is not a finite"),
    (lambda: one(stages=[Fader(mute=Curve([(0, 1, "linear")]))]), "stage 1, mute, point 1 .* use hold"),
    (lambda: one(stages=[Effect("urn:none", {"a": Curve([(0, 1)], scale="decibels")})]), "'a': a curve that is no gain"),
    # channels
    (lambda: one(Clip(Media(numpy.ones((2, 9)), RATE, layout="mono"))), "the samples have 2 channels, but the layout has 1"),
    (lambda: play(None, layout="5.1"), "type object"),
    (lambda: play(lambda *_: 0, layout="5.1"), "media 'made': the samples have 1 channels, but the layout has 6"),
    # what the engine finds
    (lambda: one(end=-1), "^track 2, item 1: track 'Boom', item 1: it ends before it begins$"),
    (lambda: one(Nest(Sequence([Track([Item(Clip(ONES), 1, 0)])]))),
     "^track 2, item 1, track 1, item 1: track 'Boom / item 1 / track 1', item 1: it ends"),
    (lambda: Sequence([Track([Item(Clip(ONES), 1, 0)])]), "^track 1, item 1: it ends before it begins$"),
    (lambda: circle(64), "nested deeper than 64 levels"),
    (lambda: circle(300), "nested deeper than 64 levels"),
]


@pytest.mark.parametrize("make, text", BAD)
def test_sequences_are_refused_with_the_place(make, text):
    with pytest.raises(sonaro.UsageError, match=text):
        make().open()


RESULTS = [
    (lambda start, frames: numpy.ones((1, frames), numpy.int16), "scale those of int16"),
    (lambda start, frames: numpy.ones((1, frames), complex), "type complex128"),
    (lambda start, frames: numpy.ma.masked_array(numpy.ones((1, frames)), mask=True), "masked"),
    (lambda start, frames: numpy.ones((2, frames)), r"of the shape \(1, \d+\), and returned \(2, \d+\)"),
    (lambda start, frames: numpy.ones(frames), r"returned \(\d+,\)"),
    (lambda start, frames: None, "type object"),
]


@pytest.mark.parametrize("function, text", RESULTS)
def test_functions_have_to_return_samples(function, text):
    with pytest.raises(sonaro.UsageError, match="track 2 'Boom', item 1, media 'made': .*" + text):
        play(function).read(0, 100)


def test_a_function_cannot_read_what_it_stands_in():
    sequence = play(lambda start, frames: opened.read(start, frames)[:1])
    with sequence.open() as opened, pytest.raises(sonaro.UsageError, match="cannot read it"):
        opened.read(0, 10)


def test_sequences_with_arrays_compare_and_any_names_are_kept(tmp_path):
    assert one() == one() and one() != one(end=0.25) and Media(ONES.samples, RATE) != ONES
    sequence = one(name=os.fsdecode(b"\xff.wav"))
    sequence.tracks[1].name = sequence.name = "\udcfe"
    assert sonaro.render(sequence, tmp_path / "out.wav", report=tmp_path / "out.json")["outputs"]
    with sequence.open() as opened:
        assert opened.read(0, 5, track="\udcfe").all()


OPTIONS = [
    ({"rate": 44100.5}, "--rate: '44100.5' is not a whole number"),
    ({"bits": 7}, "--bits: '7' is not valid"),
    ({"gain_db": [1, 2]}, "--gain-db is given more than once"),
    ({"report": ""}, "--report: the value is empty"),
    ({"report": None}, "report: None is no path"),
    ({"media": ["a\0b"]}, "--media: .* NUL"),
    ({"no_overwrite": "no"}, "--no-overwrite: 'no' is neither True nor False"),
    ({"effect": [("urn:none", 1)]}, "--effect: .* is no effect"),
    ({"cancel": 3}, "cancel: 3 is no Cancel"),
    ({"progress": 3}, "progress: 3 cannot be called"),
]


@pytest.mark.parametrize("options, text", OPTIONS)
def test_options_are_refused_by_name(edit, tmp_path, monkeypatch, options, text):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(sonaro.UsageError, match=text):
        sonaro.render(edit, "out.wav", **options)
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("timeline, output, text", [
    (None, "a.wav", "timeline: None is no path"), ("a\0b", "a.wav", "NUL"), ([], "a.wav", "there is no input"),
    ("edit.otio", "a\0b.wav", "output: .* NUL"), ("edit.otio", "", "--output: the value is empty"),
    ("edit.otio", "\ud800.wav", "output: .* half a character"),
])
def test_paths_are_refused_before_they_are_used(tmp_path, monkeypatch, timeline, output, text):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(sonaro.UsageError, match=text):
        sonaro.render(timeline, output)
    assert os.listdir(tmp_path) == []


def test_a_sequence_goes_by_itself_and_closed(tmp_path):
    for inputs, text in (([one(), one()], "by itself"), ([one(), "a.wav"], "by itself"), (one().open(), "open for reads")):
        with pytest.raises(sonaro.UsageError, match=text):
            sonaro.render(inputs, tmp_path / "out.wav")


@pytest.mark.parametrize("result, text", [(None, "returned None, which is no text"), (b"{}", "which is no text"),
                                          ("\udcff", "half a character")])
def test_what_is_no_json_is_refused(in_memory, result, text):
    timeline = in_memory("")
    timeline.to_json_string = lambda: result
    with pytest.raises(sonaro.UsageError, match=text):
        sonaro.open(timeline)


def test_sends_name_submixes():
    with pytest.raises(sonaro.UsageError, match="track 1, stage 1, name of a submix: 3 is no text"):
        Sequence([Track(stages=[Send(3)])], [Submix("bus")]).open()
