"""LV2 plugins in sequences and timelines: what is read is what the plugin does, and what a render writes."""
import numpy
import pytest
import sonaro
from sonaro import Clip, Curve, Effect, Item, Media, Nest, Sequence, Submix, Track

from timelines import clip, read_wave, timeline, track

AMP = "http://lv2plug.in/plugins/eg-amp"
DELAY = "http://drobilla.net/plugins/mda/Delay"
RATE = 48000
NOISE = Media(numpy.random.default_rng(3).uniform(-0.5, 0.5, (2, 2 * RATE)).astype(numpy.float32), RATE, name="noise")


def has(uri):
    try:
        Sequence([Track([Item(Clip(NOISE), 0, 1)], stages=[Effect(uri)])]).open().close()
    except sonaro.Error:
        return False
    return True


needs_amp = pytest.mark.skipif(not has(AMP), reason=f"needs a build with LV2, and {AMP} of lv2-examples")


@needs_amp
def test_a_plugin_on_items_tracks_submixes_and_masters_does_what_it_does():
    amp = Effect(AMP, {"gain": -6.0})
    item = Item(Clip(NOISE), 0, 2)
    sequences = [Sequence([Track([Item(Clip(NOISE), 0, 2, stages=[amp])])]), Sequence([Track([item], stages=[amp])]),
                 Sequence([Track([item], output="bus")], [Submix("bus", stages=[amp])]),
                 Sequence([Track([item])], stages=[amp])]
    expected = NOISE.samples * numpy.float32(10 ** (-6 / 20))
    for sequence in sequences + [Sequence([Track([Item(Nest(sequences[1]), 0, 2)])])]:
        assert sequence.read(0, 2 * RATE) == pytest.approx(expected, abs=1e-6)
    bypassed = Sequence([Track([item], stages=[Effect(AMP, {"gain": -6.0}, bypass=True)])])
    assert (bypassed.read(0, RATE) == NOISE.samples[:, :RATE]).all()


@needs_amp
def test_controls_follow_their_curves_and_are_checked():
    curve = Curve([(0, -20, "hold"), (1, 0, "hold")])
    samples = Sequence([Track([Item(Clip(NOISE), 0, 2)], stages=[Effect(AMP, {"gain": curve})])]).read(0, 2 * RATE)
    assert samples[:, :RATE] == pytest.approx(NOISE.samples[:, :RATE] * 0.1, abs=1e-6)
    assert samples[:, RATE:] == pytest.approx(NOISE.samples[:, RATE:], abs=1e-6)
    with pytest.raises(sonaro.Error, match="has no control .loudness.; it has gain"):
        Sequence([Track([Item(Clip(NOISE), 0, 1)], stages=[Effect(AMP, {"loudness": 1.0})])]).open()


@needs_amp
@pytest.mark.parametrize("uri", [AMP, DELAY])
def test_a_timeline_with_a_plugin_reads_as_it_renders(uri, media, tmp_path, in_memory):
    if not has(uri):
        pytest.skip(f"{uri} is not installed")
    effect = {"OTIO_SCHEMA": "Effect.1", "effect_name": "LV2", "metadata": {"sonaro": {"lv2": {"uri": uri}}}}
    content = in_memory(timeline([track("A", [clip("a", "b.wav", 0, 2000, effects=[effect])])]))
    report = sonaro.render(content, tmp_path / "mix.wav", base=media)
    assert [row["uri"] for row in report["effects"]] == [uri]
    mix = read_wave(tmp_path / "mix.wav")
    with sonaro.open(content, base=media) as opened:
        # The second read is no continuation of the first: what the plugin remembers has to be there all the same.
        for start in (0, 60000, 30000):
            assert opened.read(start, 5000).tobytes() == numpy.ascontiguousarray(mix[:, start:start + 5000]).tobytes()
