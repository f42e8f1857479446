#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws what lies between the two ears of the built-in HRTF set, beside the measurement it came from.

    draw_hrtf_plots.py [--docs docs]       writes binaural-kemar.svg

Over the azimuth in the horizontal plane: the set's delays against the first arrivals in the measured
responses, and the level difference of the set's cells at three frequencies against the measured one.
Needs Debian's python3-numpy.
"""
import sys
from pathlib import Path

sys.dont_write_bytecode = True
from fit_kemar import NUM_DIRECTIONS, NUM_TAPS, RATE, Measurement, erb  # numpy has to come later
from svg import BLACK, BLUE, GREEN, ORANGE, WIDTH, Panel, drawing_options, headline, page, write

import numpy as np

AZIMUTHS = ((-180, "back"), (-90, "left"), (0, "front"), (90, "right"), (180, "back"))


def along(azimuth):
    return (azimuth + 180.0) / 360.0


TONES = ((500.0, BLUE), (2000.0, GREEN), (8000.0, ORANGE))
TICKS = [(along(azimuth), f"{azimuth}° {word}") for azimuth, word in AZIMUTHS]


def first_arrivals(folder, rows, factor=16):
    """Of both ears, the time at which the response first reaches a tenth of its peak, in seconds."""
    samples = np.fromfile(folder / "impulses.s16", dtype="<i2").reshape(NUM_DIRECTIONS, 2, NUM_TAPS)[rows]
    fine = np.abs(np.fft.irfft(np.fft.rfft(samples / 32768.0, 1024), 1024 * factor))[..., :NUM_TAPS * factor]
    limit = 0.1 * fine.max(axis=-1, keepdims=True)
    after = np.argmax(fine >= limit, axis=-1)[..., None]
    high, low = np.take_along_axis(fine, after, -1), np.take_along_axis(fine, after - 1, -1)
    return (after - 1 + (limit - low) / (high - low))[..., 0] / factor / RATE


def measured_level(measurement, rows, tone):
    """Decibels of the left ear, smoothed over one ERB; a common factor of all directions is left in."""
    f = measurement.frequencies[1:]
    weight = np.exp(-np.pi * (erb(f) - erb(tone)) ** 2) / (1.0 + 0.00437 * f)
    return 10.0 * np.log10((np.abs(measurement.spectra[rows, 1:]) ** 2 * weight).sum(axis=1))


def cell_level(coefficients, tone):
    z = np.exp(-2j * np.pi * tone / RATE)
    b0, b1, b2, a1, a2 = coefficients.reshape(-1, 6, 5).transpose(2, 0, 1)
    return 20.0 * np.log10(np.abs((b0 + z * (b1 + z * b2)) / (1.0 + z * (a1 + z * a2)))).sum(axis=1)


def draw(folder):
    measurement = Measurement(folder / "measurement")
    rows = next(ring for ring in measurement.rings if measurement.elevation[ring[0]] == 0.0)
    rows = np.append(rows, rows[:1])  # once round
    azimuths = measurement.azimuth[rows]
    azimuths[-1] += 360.0
    mirror = measurement.mirror[rows]

    times = Panel(94, "Arrival at the left ear minus arrival at the right one, ms", -0.8, 0.8, 0.4, TICKS, rules=True)
    arrivals = first_arrivals(folder / "measurement", rows) * 1e3
    times.line(along(azimuths), np.loadtxt(folder / "delays.txt")[rows], BLACK)
    times.dots(along(azimuths), arrivals[:, 0] - arrivals[:, 1], BLACK)

    levels = Panel(times.bottom + 70, "Level of the left ear minus level of the right one, dB", -40, 40, 20, TICKS, rules=True)
    coefficients = np.loadtxt(folder / "coefficients.txt")
    for tone, colour in TONES:
        levels.line(along(azimuths), cell_level(coefficients[rows], tone) - cell_level(coefficients[mirror], tone), colour)
        levels.dots(along(azimuths), measured_level(measurement, rows, tone) - measured_level(measurement, mirror, tone),
                    colour)
    levels.legend([(f"{tone:g} Hz", colour) for tone, colour in TONES])
    return page(WIDTH, levels.bottom + 40, "The built-in set between the ears, against the measurement",
                headline("Between the ears, horizontal plane", "lines: the built-in set; rings: the measurement") +
                times.lines + levels.lines)


if __name__ == "__main__":
    home = Path(__file__).resolve().parent.parent
    write(drawing_options(__doc__).docs / "binaural-kemar.svg", draw(home / "libquilo/data/kemar"))
