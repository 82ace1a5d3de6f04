#!/usr/bin/env python3
"""Plots the loudness of a timeline's mix and the waveform of one of its tracks.

Usage: plot_mix.py TIMELINE TRACK PICTURE.png    needs python3-matplotlib
"""
import sys

import matplotlib

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402

import sonaro  # noqa: E402


def plot(path, track, picture):
    with sonaro.open(path) as timeline:
        mix = sonaro.loudness(timeline)
        wave = sonaro.waveform(timeline, track=track, samples_per_column=timeline.rate // 50)
    series = mix["series"]
    figure, (above, below) = pyplot.subplots(2, sharex=True, figsize=(10, 6), layout="constrained")
    above.plot(series.times, series.momentary, linewidth=0.8, label="momentary")
    above.plot(series.times, series.short_term, label="short-term")
    above.axhline(mix["integratedLufs"], color="0.4", linestyle=":", label="integrated")
    above.set(title=f"Loudness of the mix, {mix['integratedLufs']:.1f} LUFS", ylabel="LUFS", ylim=(-60, 0))
    above.legend(loc="lower right", ncols=3)
    below.fill_between(wave.times, wave.minima.min(axis=0), wave.maxima.max(axis=0), linewidth=0, alpha=0.4, label="peaks")
    rms = wave.rms.max(axis=0)
    below.fill_between(wave.times, -rms, rms, linewidth=0, label="RMS")
    below.set(title=f"Waveform of the track {track}", xlabel="seconds", ylim=(-1, 1), xlim=(0, timeline.duration))
    below.legend(loc="lower right", ncols=2)
    figure.savefig(picture, dpi=100)


if __name__ == "__main__":
    plot(*sys.argv[1:4])
