#!/usr/bin/env python3
"""Fits the filters by which first-order ambisonic sound is heard with two ears, and writes them as C++ source.

Usage: make-hrir-table.py [SOFA_FILE] [-o OUTPUT]

The measurements are those of the KEMAR manikin (W. G. Gardner and K. D. Martin, MIT Media Lab, 1994), which Debian's
libmysofa1 installs. Needs python3-numpy, python3-scipy and python3-h5py.

Sound from a direction has the components W = 1, Y = sin(a) cos(e), Z = sin(e), X = cos(a) cos(e) for azimuth a (left is
positive) and elevation e. At each frequency the script looks for the four complex factors that make their sum like what
the left ear hears, over all measured directions; the right ear hears the mirrored directions. Three errors are weighed:
the level at the ear, the difference of levels between the ears, and their difference in time. That one counts in full
up to 600 Hz and no more from 1500 Hz on, where people locate by level. Two reference designs are printed beside it:
plain least squares of the complex responses, and eight virtual directions at the corners of a cube.

Before the fit, all responses are divided by the mean spectrum of all directions (diffuse-field equalisation) and by the
phase of their mean. This takes the loudspeaker and the ear canal out and changes no difference between the ears.
"""
import argparse
import os
import textwrap

import h5py
import numpy as np
import scipy.optimize

SOFA_FILE = "/usr/share/libmysofa/MIT_KEMAR_normal_pinna.sofa"
OUTPUT = os.path.join(os.path.dirname(os.path.abspath(__file__)),
                      "../Platform/zorvaudiofilters/Src/ambisonics/binauralizer/HRIRTable.inc")
# Sample rates with the lengths of their filters, about 2.7 milliseconds each.
SETS = ((44100, 128), (48000, 128), (88200, 256), (96000, 256))
# When a plane wave that comes at 0 reaches the middle of the head, in seconds.
TABLE_CENTER = 28 / 44100
# Below this the loudspeaker gave too little to measure; the factors are continued from there.
LOWEST = 150.0
# From 1 to 0 between these, in hertz: the weight of the difference in time, and the response at the end of hearing.
TIME_FADE = (600.0, 1500.0)
TOP_FADE = (19000.0, 22000.0)
MIRROR = np.array([1.0, -1.0, 1.0, 1.0])


def fade(frequency, limits):
    position = np.clip((frequency - limits[0]) / (limits[1] - limits[0]), 0.0, 1.0)
    return 0.5 + 0.5 * np.cos(np.pi * position)


def decibels(values):
    return 10.0 * np.log10(np.abs(values) ** 2 + 1e-3)


class Measurements:
    """What the left and the right ear hear, by direction and frequency, without what all directions have in common."""

    def __init__(self, path):
        with h5py.File(path) as sofa:
            positions = sofa["SourcePosition"][:]
            responses = sofa["Data.IR"][:]
            self.rate = float(sofa["Data.SamplingRate"][0])
        self.azimuth, self.elevation = np.radians(positions[:, 0]), np.radians(positions[:, 1])
        self.field = encode(self.azimuth, self.elevation)
        self.area = self.find_areas(positions[:, 1])
        size = responses.shape[2]
        self.frequencies = np.fft.rfftfreq(size, 1.0 / self.rate)
        spectra = np.fft.rfft(responses, axis=2)
        mean = np.sqrt(np.einsum("d,def->f", self.area, np.abs(spectra) ** 2) / 2.0)
        self.left, self.right = np.moveaxis(spectra / np.maximum(mean, 1e-9), 1, 0)
        # The common phase is that of the loudspeaker and of the distance.
        for k in range(len(self.frequencies)):
            common = np.exp(-1j * np.angle(fit_plain(self, k)[0]))
            self.left[:, k] *= common
            self.right[:, k] *= common

    @staticmethod
    def find_areas(elevations):
        """The part of the sphere that each direction stands for; the lowest ring has all that is below it."""
        areas = np.zeros(len(elevations))
        for elevation in np.unique(elevations):
            ring = elevations == elevation
            low = elevation - 5.0 if elevation > elevations.min() else -90.0
            ends = np.sin(np.radians([low, min(elevation + 5.0, 90.0)]))
            areas[ring] = (ends[1] - ends[0]) / np.count_nonzero(ring)
        return areas / areas.sum()


def encode(azimuth, elevation):
    """W, Y, Z and X of a plane wave, by direction."""
    level = np.cos(elevation)
    return np.stack([np.ones_like(azimuth), np.sin(azimuth) * level, np.sin(elevation), np.cos(azimuth) * level], 1)


def fit_plain(data, k):
    root = np.sqrt(data.area)
    return np.linalg.lstsq(root[:, None] * data.field, root * data.left[:, k], rcond=None)[0]


def fit_cube(data, k):
    """Eight loudspeakers around the head, each fed with its share of the field."""
    ends = (-1.0, 1.0)
    total = np.zeros(4, complex)
    for corner in ((1.0, y, z, x) for x in ends for y in ends for z in ends):
        corner = np.array(corner) / np.sqrt([1.0, 3.0, 3.0, 3.0])
        nearest = np.argmax(data.field @ (corner * [0.0, 1.0, 1.0, 1.0]))
        total += corner * [1.0, 3.0, 3.0, 3.0] * data.left[nearest, k] / 8.0
    return total


def get_errors(data, k, factors):
    """By direction: the level at the ear and between the ears in decibels, the time between the ears in samples."""
    left, right = data.field @ factors, data.field @ (MIRROR * factors)
    wanted_left, wanted_right = data.left[:, k], data.right[:, k]
    level = decibels(left) - decibels(wanted_left)
    between = decibels(left) - decibels(right) - decibels(wanted_left) + decibels(wanted_right)
    phase = np.angle(left * np.conj(right) * np.conj(wanted_left) * wanted_right)
    time = phase / (2.0 * np.pi * data.frequencies[k]) * data.rate
    return level, between, time


def fit(data, k, before):
    """The factors at frequency k; before: those at the frequency below it, or None. Where time does not count, the
    phase goes on as it was, which keeps the filters short."""
    root = np.sqrt(data.area)
    share = fade(data.frequencies[k], TIME_FADE)
    phase = data.left[:, k] if before is None else share * data.left[:, k] + (1.0 - share) * (data.field @ before)
    target = np.abs(data.left[:, k]) * np.exp(1j * np.angle(phase))

    def residuals(parts):
        factors = parts[:4] + 1j * parts[4:]
        difference = (data.field @ factors - target) * root
        level, between, time = get_errors(data, k, factors)
        return np.concatenate([2.0 * difference.real, 2.0 * difference.imag, 0.5 * level * root, between * root,
                               share * time * root])

    start = fit_plain(data, k) if before is None else before
    found = scipy.optimize.least_squares(residuals, np.concatenate([start.real, start.imag]), max_nfev=40).x
    return found[:4] + 1j * found[4:]


def fit_all(data):
    """The factors of all frequencies."""
    count = len(data.frequencies)
    first = int(np.ceil(LOWEST / data.frequencies[1]))
    factors = np.zeros((4, count), complex)
    before = None
    for k in range(first, count):
        before = factors[:, k] = fit(data, k, before)
    for k in range(first):
        factors[:, k] = factors[:, first].real + 1j * factors[:, first].imag * k / first
    return factors * fade(data.frequencies, TOP_FADE)


def make_filters(data, factors, rate, taps):
    """The filters of that length whose spectra are nearest to the factors, with the same weight for each octave, and to
    nothing above them."""
    spacing = data.frequencies[1]
    above = np.arange(data.frequencies[-1] + spacing, rate / 2.0, spacing)
    frequencies = np.concatenate([data.frequencies, above])
    targets = np.concatenate([factors, np.zeros((4, len(above)))], axis=1)
    weights = 1.0 / np.sqrt(frequencies + 2.0 * spacing)
    times = np.arange(taps) / rate - TABLE_CENTER
    waves = np.exp(-2j * np.pi * np.outer(frequencies, times)) * weights[:, None]
    wanted = (targets * weights).T
    return np.linalg.lstsq(np.concatenate([waves.real, waves.imag]), np.concatenate([wanted.real, wanted.imag]),
                           rcond=1e-9)[0].T


def get_factors(data, filters, rate):
    """What filters do at the measurements' frequencies."""
    times = np.arange(filters.shape[1]) / rate - TABLE_CENTER
    return filters @ np.exp(-2j * np.pi * np.outer(times, data.frequencies))


def print_errors(data, designs):
    print("root mean square over all directions: level at the ear, between the ears (dB), time between them (samples)")
    print("Hz".rjust(14) + "".join(name.rjust(24) for name in designs))
    for low, high in ((150, 300), (300, 600), (600, 1000), (1000, 1500), (1500, 3000), (3000, 4000), (4000, 8000),
                      (8000, 16000), (150, 16000)):
        bins = np.nonzero((data.frequencies >= low) & (data.frequencies < high))[0]
        line = f"{low}-{high}".rjust(14)
        for factors in designs.values():
            # In octaves rather than in hertz.
            weights = 1.0 / bins
            errors = [get_errors(data, k, factors[:, k]) for k in bins]
            squares = np.array([[data.area @ kind ** 2 for kind in kinds] for kinds in errors])
            line += "{:10.2f} {:6.2f} {:6.2f}".format(*np.sqrt(weights @ squares / weights.sum()))
        print(line)


def write_table(path, sets):
    values = np.concatenate([filters.ravel() for filters in sets])
    lines = textwrap.wrap(", ".join(f"{value:.7e}f" for value in values), 120)
    temporary = path + ".tmp"
    with open(temporary, "w", encoding="utf-8") as output:
        output.write("// Written by Scripts/make-hrir-table.py from measurements of the KEMAR manikin, copyright 1994 by\n"
                     "// the MIT Media Laboratory (W. G. Gardner and K. D. Martin). For each rate of kSets the filters of\n"
                     "// W, Y, Z and X for the left ear.\n")
        output.write("\n".join(lines) + "\n")
    os.replace(temporary, path)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("sofa", nargs="?", default=SOFA_FILE)
    parser.add_argument("-o", "--output", default=OUTPUT)
    arguments = parser.parse_args()
    data = Measurements(arguments.sofa)
    fitted = fit_all(data)
    sets = [make_filters(data, fitted, rate, taps) for rate, taps in SETS]
    count = len(data.frequencies)
    designs = {
        "least squares": np.stack([fit_plain(data, k) for k in range(count)], 1),
        "eight directions": np.stack([fit_cube(data, k) for k in range(count)], 1),
        "fit": fitted,
    }
    designs |= {str(rate): get_factors(data, filters, rate) for (rate, _), filters in zip(SETS, sets)}
    print_errors(data, designs)
    write_table(arguments.output, sets)


if __name__ == "__main__":
    main()
