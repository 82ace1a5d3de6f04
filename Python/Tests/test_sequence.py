"""Sequences of dataclasses give what their numbers say."""
import os
import random

import numpy
import pytest
import sonaro
from sonaro import Clip, Crossfade, Curve, Cut, Fade, Fader, Item, Media, Multicam, Nest, Send, Sequence, Submix, Track

from timelines import read_wave, write_wave

RATE = 48000
ONES = Media(numpy.ones((1, 2 * RATE)), RATE, name="ones")
RAMP = Media((numpy.arange(2 * RATE)[numpy.newaxis] / (2 * RATE)).astype(numpy.float32), RATE, name="ramp")


def one(item, **more):
    return Sequence([Track([item], layout="mono")], layout="mono", **more)


def test_items_stand_where_they_are_put():
    sequence = one(Item(Clip(RAMP, start=1000), 0.5, 1.0), duration=1.5)
    with sequence.open() as opened:
        assert (opened.frames, opened.rate, opened.layout, opened.channels) == (72000, RATE, "mono", 1)
        samples = opened.read(0, 72000)[0]
    assert (samples[:24000] == 0).all() and (samples[48000:] == 0).all()
    assert (samples[24000:48000] == RAMP.samples[0, 1000:25000]).all()
    backwards = one(Item(Clip(RAMP, start=1000), 0, 1, speed=-1.0)).read(0, 1002)[0]
    assert (backwards[:1001] == RAMP.samples[0, 1000::-1]).all() and backwards[1001] == 0
    swapped = Media(numpy.stack([numpy.zeros(100), numpy.ones(100)]), RATE)
    both = Sequence([Track([Item(Clip(swapped, channels=[1, 0]), 0, 0.002)])]).read(0, 90)
    assert (both[0] == 1).all() and (both[1] == 0).all()


def test_fades_crossfades_and_curves_follow_their_shapes():
    faded = one(Item(Clip(ONES), 0, 1, fade_in=0.5, fade_out=Fade(0.25, "s-curve"))).read(0, RATE)[0]
    assert faded[:24000] == pytest.approx(numpy.arange(24000) / 24000, abs=1e-4)
    rest = numpy.arange(12000, 0, -1) / 12000
    assert faded[36000:] == pytest.approx(rest * rest * (3 - 2 * rest), abs=2e-4)
    items = [Item(Clip(ONES), 0, 1), Item(Clip(ONES), 1, 2)]
    crossed = Sequence([Track(items, layout="mono", crossfades=[Crossfade(0, 0.1, 0.1, "equal-power", "equal-power")])],
                       layout="mono").read(0, 2 * RATE)[0]
    assert crossed[RATE] == pytest.approx(2 ** 0.5, abs=1e-3) and crossed[:43000] == pytest.approx(1)
    gain = Fader(Curve([(0, 0), (0.5, -20), (1, -200)], scale="decibels"))
    moved = one(Item(Clip(ONES), 0, 2, stages=[gain])).read(0, RATE)[0]
    assert moved[24000] == pytest.approx(0.1, rel=1e-3) and moved[12000] == pytest.approx(10 ** -0.5, rel=1e-3)
    muted = one(Item(Clip(ONES), 0, 2, stages=[Fader(mute=Curve([(0, False), (1, True)]))]))
    assert muted.read(47000, 10).min() == 1 and abs(muted.read(60000, 10)).max() == 0
    panned = Sequence([Track([Item(Clip(ONES), 0, 1)], layout="mono", pan=0.0)]).read(100, 10)
    assert panned[0].min() > 0.9 and abs(panned[1]).max() < 1e-6
    moved = Sequence([Track([Item(Clip(ONES), 0, 2)], layout="mono", pan=Curve([(0, 0), (1, 1)]))]).read(0, RATE)
    assert moved[0, 100] > 0.9 > 0.1 > moved[1, 100] and moved[0, -100] < 0.1 < 0.9 < moved[1, -100]


def test_sends_and_submixes_add_up():
    tracks = [Track([Item(Clip(ONES), 0, 1)], name="dry", layout="mono", stages=[Send("bus", gain=0.5)]),
              Track([Item(Clip(ONES), 0, 1)], name="bus only", layout="mono", output="bus"),
              Track([Item(Clip(ONES), 0, 1)], name="nowhere", layout="mono", output=False),
              Track([Item(Clip(ONES), 0, 1)], name="off", layout="mono", mute=True)]
    sequence = Sequence(tracks, [Submix("bus", "mono", stages=[Fader(0.25)])], "mono", stages=[Fader(2.0)])
    with sequence.open(readers=2) as opened:
        assert opened.read(5000, 100) == pytest.approx(2 * (1 + 0.25 * (0.5 + 1)))
        assert opened.read(5000, 100, track="dry") == pytest.approx(2 * (1 + 0.25 * 0.5))
        assert opened.read(5000, 100, track=2) == pytest.approx(2 * 0.25)
        with pytest.raises(sonaro.UsageError, match="no tracks are called 'wet'"):
            opened.read(0, 1, track="wet")


def test_nests_and_angles_are_heard_in_their_time():
    inner = one(Item(Clip(RAMP), 0, 2))
    nested = one(Item(Nest(inner, start=0.5), 0.25, 1.0), duration=1)
    assert (nested.read(12000, 1000)[0] == RAMP.samples[0, 24000:25000]).all()
    angles = [one(Item(Clip(ONES), 0, 2, stages=[Fader(gain)])) for gain in (0.25, 0.5)]
    cut = one(Item(Multicam(angles, [Cut(0.5, 1), Cut(0.75, 0, Fade(0.01))]), 0, 1)).read(0, RATE)[0]
    assert (cut[:24000] == 0.25).all() and (cut[24000:36000] == 0.5).all() and (cut[36600:] == 0.25).all()


def test_a_track_is_read_alone_with_all_that_it_nests():
    inner = Sequence([Track([Item(Clip(ONES), 0, 1)], layout="mono", stages=[Fader(gain)]) for gain in (1, 2, 4)],
                     layout="mono")
    for content in (Nest(inner), Multicam([inner])):
        outer = Sequence([Track([Item(Clip(ONES), 0, 1)], layout="mono"), Track([Item(content, 0, 1)], layout="mono"),
                          Track([Item(Nest(one(Item(content, 0, 1))), 0, 1)], layout="mono")], layout="mono")
        with outer.open() as opened:
            assert [opened.read(100, 9, track).mean() for track in (1, 2, 3, None)] == [1, 7, 7, 15]


def test_speeds_and_rates_are_exact(tmp_path):
    noise = numpy.random.default_rng(3).uniform(-0.5, 0.5, (2, 44100)).astype(numpy.float32)
    write_wave(tmp_path / "noise.wav", noise, 44100)
    of_array = Sequence([Track([Item(Clip(Media(noise, 44100)), 0, 1)])]).read(0, RATE)
    of_file = Sequence([Track([Item(Clip(Media(tmp_path / "noise.wav")), 0, 1)])]).read(0, RATE)
    assert (of_array == sonaro.resample(noise, 44100, RATE)).all() and (of_file == of_array).all()
    ramped = one(Item(Clip(RAMP), 0, 1, speed=Curve([(0, 1), (1, 2)]))).read(0, RATE)[0]
    at = numpy.array([1000, 20000, 40000])
    assert ramped[at] * 2 * RATE == pytest.approx(at + at * at / (2 * RATE), abs=0.1)


def test_functions_are_media_at_any_place_and_thread(tmp_path):
    def play(start, frames):
        return numpy.sin(numpy.arange(start, start + frames) * 0.01).astype(numpy.float32)[numpy.newaxis]

    whole = play(0, RATE)
    sequence = one(Item(Clip(Media(play, RATE, channels=1, frames=RATE)), 0, 1))
    with sequence.open(readers=2) as opened:
        choose = random.Random(4)
        for _ in range(50):
            start = choose.randrange(RATE)
            samples = opened.read(start, 3000)[0]
            count = min(3000, RATE - start)
            assert (samples[:count] == whole[0, start:start + count]).all() and not samples[count:].any()
    report = sonaro.render(sequence, tmp_path / "out.wav", jobs=2, limit_dbtp=-6)
    assert report["outputs"][0]["truePeakDbtp"] == pytest.approx(-6, abs=0.05)
    sonaro.render(sequence, tmp_path / "out.wav", report=tmp_path / "out.json")
    assert (read_wave(tmp_path / "out.wav") == whole).all()
    assert sonaro.loudness(sequence)["samples"] == RATE
    with pytest.raises(sonaro.UsageError, match="--rate does not apply to a sequence"):
        sonaro.render(sequence, tmp_path / "out.wav", rate=44100)


def test_what_functions_raise_is_raised(tmp_path):
    def fail(start, frames):
        if start >= 8000:
            raise KeyError("no more")
        return numpy.zeros((1, frames), dtype=numpy.float32)

    sequence = one(Item(Clip(Media(fail, RATE, channels=1, frames=RATE)), 0, 1))
    with sequence.open() as opened:
        for _ in range(2):
            assert not opened.read(0, 1000).any()
            with pytest.raises(KeyError, match="no more"):
                opened.read(0, 20000)
    with pytest.raises(KeyError, match="no more"):
        sonaro.render(sequence, tmp_path / "out.wav")
    assert os.listdir(tmp_path) == []
    short = Media(lambda start, frames: numpy.zeros((1, 3), dtype=numpy.float32), RATE, channels=1, frames=RATE)
    with pytest.raises(ValueError, match=r"shape \(1, "):
        one(Item(Clip(short), 0, 1)).read(0, 100)


def circle():
    inner = Sequence([Track([])])
    inner.tracks[0].items.append(Item(Nest(inner), 0, 1))
    return inner


BAD = [
    (lambda: one(Item(Clip(ONES), 0, 1, resampling="best")), "track 1, item 1: 'best' is not valid; use exact"),
    (lambda: one(Item("song.wav", 0, 1)), "'song.wav' is no content"),
    (lambda: one(Item(Clip("song.wav"), 0, 1)), "'song.wav' is no Media"),
    (lambda: one(Item(Clip(ONES), 0, float("inf"))), "inf is not a finite number"),
    (lambda: one(Item(Clip(ONES), 0, 1, stages=[Send("bus")])), "sends stand on tracks"),
    (lambda: Sequence([Track([], stages=[Send("bus")])]), "there is no submix 'bus'"),
    (lambda: Sequence([Track([], layout="quad")]), "'quad' is not a layout"),
    (lambda: one(Item(Clip(Media(ONES.samples)), 0, 1)), "a rate of None is out of range"),
    (lambda: one(Item(Clip(Media(lambda *_: 0, RATE)), 0, 1)), "has to have channels and frames"),
    (lambda: one(Item(Clip(ONES), 0, 1, stages=[sonaro.Effect("urn:none")])), "urn:none"),
    (circle, "it nests itself"),
]


@pytest.mark.parametrize("make, text", BAD)
def test_what_contradicts_itself_is_refused(make, text):
    with pytest.raises(sonaro.Error, match=text):
        make().open()
