"""loudness, waveform, resample and stretch say of arrays what the command says of files."""
import json

import numpy
import pytest
import sonaro

from timelines import read_wave, write_wave

RATE = 44100


@pytest.fixture(scope="module")
def sound(tmp_path_factory):
    """A file of two channels, and its samples: tones that come and go."""
    time = numpy.arange(5 * RATE) / RATE
    samples = numpy.stack([0.5 * numpy.sin(2 * numpy.pi * 997 * time) * (time % 1 < 0.7),
                           0.2 * numpy.sin(2 * numpy.pi * (200 + 300 * time) * time)]).astype(numpy.float32)
    path = tmp_path_factory.mktemp("sound") / "sound.wav"
    write_wave(path, samples, RATE)
    return path, samples


def test_loudness_of_arrays_files_and_timelines_agrees(sound, edit, command):
    path, samples = sound
    ours = sonaro.loudness(samples, RATE)
    series = ours.pop("series")
    theirs = json.loads(command("loudness", path, "--json")[1])["inputs"][0]
    assert sonaro.loudness(path) == theirs
    assert {**ours, "path": theirs["path"]} == theirs
    assert abs(max(series.momentary) - ours["momentaryMaximum"]["lufs"]) < 0.06
    assert len(series.times) == len(series.short_term) == 50 and numpy.isneginf(series.short_term[:29]).all()
    with sonaro.open(edit) as opened:
        mix = sonaro.loudness(opened)
        assert mix.pop("series").times[-1] == pytest.approx(opened.duration, abs=0.1)
        whole = sonaro.loudness(edit)
        assert {**mix, "path": whole["path"]} == whole
        assert sonaro.loudness(opened, track="Music")["integratedLufs"] < mix["integratedLufs"]
    silent = sonaro.loudness(numpy.zeros(RATE), RATE)
    assert silent["integratedLufs"] == -numpy.inf and "is silent" in silent["problem"]


def test_waveforms_have_the_extremes_of_their_columns(sound, edit):
    path, samples = sound
    wave = sonaro.waveform(samples, RATE, samples_per_column=1000)
    assert wave.columns.shape == (2, 221, 3)
    parts = samples[:, :220000].reshape(2, 220, 1000)
    assert (wave.minima[:, :220] == parts.min(axis=2)).all() and (wave.maxima[:, :220] == parts.max(axis=2)).all()
    assert wave.rms[:, :220] == pytest.approx(numpy.sqrt((parts.astype(float) ** 2).mean(axis=2)), rel=1e-4)
    assert wave.maxima[:, 220] == pytest.approx(samples[:, 220000:].max(axis=1))
    of_file = sonaro.waveform(path, samples_per_column=1000)
    assert of_file.rate == RATE and (of_file.columns[:, :, :2] == wave.columns[:, :, :2]).all()
    assert of_file.rms == pytest.approx(wave.rms, rel=1e-5)
    with sonaro.open(edit) as opened:
        mix = opened.read(0, opened.frames)
        expected = sonaro.waveform(mix, opened.rate).columns
        assert sonaro.waveform(edit).columns == pytest.approx(expected, rel=1e-5)
        assert (sonaro.waveform(opened, track="Music").columns != expected).any()


@pytest.mark.parametrize("rate, quality", [(48000, "exact"), (32000, "draft"), (22050, "exact")])
def test_resampling_is_that_of_a_render(sound, tmp_path, rate, quality):
    path, samples = sound
    sonaro.render(path, tmp_path / "out.wav", rate=rate, resampling=quality, report=False)
    ours = sonaro.resample(samples, RATE, rate, quality=quality)
    assert ours.dtype == numpy.float32
    assert (ours == read_wave(tmp_path / "out.wav")).all()
    assert (sonaro.resample(samples[0], RATE, rate, quality=quality) == ours[:1]).all()
    assert (sonaro.resample(samples, rate, rate, quality=quality) == samples).all()


@pytest.mark.parametrize("speed, keep_pitch, semitones", [(1.0, True, 0.0), (1.0, False, 0.0), (1.0, True, 2.0), (1.25, True, 0.0), (0.8, True, 3.0), (1.5, False, 0.0),
                                                          (2.0, False, -5.0)])
def test_stretching_is_that_of_a_render(sound, tmp_path, speed, keep_pitch, semitones):
    path, samples = sound
    sonaro.render(path, tmp_path / "out.wav", speed=speed, keep_pitch=keep_pitch, pitch=semitones, report=False)
    theirs = read_wave(tmp_path / "out.wav")
    ours = sonaro.stretch(samples, RATE, speed, keep_pitch=keep_pitch, semitones=semitones)
    assert ours.shape == theirs.shape == (2, round(samples.shape[1] / speed))
    assert (ours == theirs).all()
    scaled = sonaro.stretch(samples, RATE, 1.25, engine="scaler")
    assert scaled.shape == (2, round(samples.shape[1] / 1.25)) and abs(scaled).max() > 0.3


BAD = [
    (lambda: sonaro.loudness(numpy.zeros(10)), "an array has no rate"),
    (lambda: sonaro.loudness(numpy.zeros((2, 10)), 48000, layout="quad"), "'quad' is not a layout"),
    (lambda: sonaro.loudness(numpy.zeros((2, 10)), 48000, layout="5.1"), "2 channels, but the layout has 6"),
    (lambda: sonaro.loudness(numpy.zeros(10, dtype=numpy.int16), 48000), "scale those of int16 first"),
    (lambda: sonaro.loudness(None, 48000), "not of the type object"),
    (lambda: sonaro.waveform(numpy.array([0, numpy.nan]), 48000), "a sample is not a finite number"),
    (lambda: sonaro.waveform(numpy.ma.masked_array([0.5, 0.5], mask=[0, 1]), 48000), "cannot be masked"),
    (lambda: sonaro.resample(numpy.zeros(10), float("nan"), 48000), "from_rate: nan is not a finite number"),
    (lambda: sonaro.resample(numpy.zeros(10), 1, 48000), "more than 1000 times apart"),
    (lambda: sonaro.waveform(numpy.zeros((2, 2, 2)), 48000), r"the shape \(2, 2, 2\)"),
    (lambda: sonaro.waveform(numpy.zeros(10), 48000, samples_per_column=0), "samples_per_column: 0 is out of range"),
    (lambda: sonaro.resample(numpy.zeros(10), 48000, 0), "48000 to 0 Hz are no rates"),
    (lambda: sonaro.resample(numpy.zeros(10), 48000, 7), "1000"),
    (lambda: sonaro.resample(numpy.zeros((65, 10)), 48000, 44100), "1 to 64 channels"),
    (lambda: sonaro.stretch(numpy.zeros(10), 48000, 0.01), "cannot keep its pitch"),
    (lambda: sonaro.stretch(numpy.zeros(10), 48000, float("nan")), "speed: nan is not a finite number"),
    (lambda: sonaro.stretch(numpy.zeros(10), 48000, 2, engine="magic"), "'magic' is no engine"),
]


@pytest.mark.parametrize("call, text", BAD)
def test_what_makes_no_sense_is_refused(call, text):
    with pytest.raises(sonaro.UsageError, match=text):
        call()


def test_empty_arrays_stay_empty():
    empty = numpy.zeros((2, 0), dtype=numpy.float32)
    assert sonaro.resample(empty, 48000, 44100).shape == sonaro.stretch(empty, 48000, 2.0).shape == (2, 0)
    assert sonaro.waveform(empty, 48000).columns.shape == (2, 0, 3)
