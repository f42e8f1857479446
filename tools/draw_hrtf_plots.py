#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws what lies between the two ears of the built-in HRTF set, beside the measurement it came from.

    draw_hrtf_plots.py [--kemar libquilo/data/kemar] [--out docs/binaural-kemar.svg]

Over the azimuth in the horizontal plane: the set's delays against the first arrivals in the measured
responses, and the level difference of the set's cells at three frequencies against the measured one.
Needs Debian's python3-numpy.
"""
import argparse
import sys
from pathlib import Path

sys.dont_write_bytecode = True
from fit_kemar import NUM_DIRECTIONS, NUM_TAPS, RATE, Measurement, erb  # numpy has to come later

import numpy as np

TONES = ((500.0, "#0072b2"), (2000.0, "#009e73"), (8000.0, "#d55e00"))
BLACK, GREY, FAINT = "#1f2933", "#66727f", "#e4e9ee"
WIDTH, LEFT, RIGHT, PANEL = 760, 64, 40, 210


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


def text(x, y, words, size=12, anchor="start", colour=BLACK, weight="normal"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" fill="{colour}" '
            f'stroke="none" font-weight="{weight}">{words}</text>')


class Panel:
    """A field of azimuth and one quantity, its lines and dots."""

    def __init__(self, top, title, low, high, step):
        self.top, self.low, self.high = top, low, high
        self.lines = [text(LEFT, top - 10, title, 13, weight="bold")]
        for value in np.arange(low, high + 1e-9, step):
            y = self._y(value)
            self.lines.append(f'<line x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y:.1f}" y2="{y:.1f}" stroke="{FAINT}"/>')
            self.lines.append(text(LEFT - 8, y + 4, f"{value:g}", 11, "end", GREY))
        for azimuth, word in ((-180, "back"), (-90, "left"), (0, "front"), (90, "right"), (180, "back")):
            x = self._x(azimuth)
            self.lines.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{top}" y2="{top + PANEL}" stroke="{FAINT}"/>')
            self.lines.append(text(x, top + PANEL + 18, f"{azimuth}° {word}", 11, "middle", GREY))

    def _x(self, azimuth):
        return LEFT + (azimuth + 180.0) / 360.0 * (WIDTH - LEFT - RIGHT)

    def _y(self, value):
        return self.top + (self.high - value) / (self.high - self.low) * PANEL

    def line(self, azimuths, values, colour):
        spots = " ".join(f"{self._x(a):.1f},{self._y(v):.1f}" for a, v in zip(azimuths, values))
        self.lines.append(f'<polyline points="{spots}" stroke="{colour}" stroke-width="1.8"/>')

    def dots(self, azimuths, values, colour):
        self.lines += [f'<circle cx="{self._x(a):.1f}" cy="{self._y(v):.1f}" r="2.6" stroke="{colour}"/>'
                       for a, v in zip(azimuths, values)]


def draw(folder):
    measurement = Measurement(folder / "measurement")
    rows = next(ring for ring in measurement.rings if measurement.elevation[ring[0]] == 0.0)
    rows = np.append(rows, rows[:1])  # once round
    azimuths = measurement.azimuth[rows]
    azimuths[-1] += 360.0
    mirror = measurement.mirror[rows]

    times = Panel(94, "Arrival at the left ear minus arrival at the right one, ms", -0.8, 0.8, 0.4)
    arrivals = first_arrivals(folder / "measurement", rows) * 1e3
    times.line(azimuths, np.loadtxt(folder / "delays.txt")[rows], BLACK)
    times.dots(azimuths, arrivals[:, 0] - arrivals[:, 1], BLACK)

    levels = Panel(94 + PANEL + 70, "Level of the left ear minus level of the right one, dB", -40, 40, 20)
    coefficients = np.loadtxt(folder / "coefficients.txt")
    for tone, colour in TONES:
        levels.line(azimuths, cell_level(coefficients[rows], tone) - cell_level(coefficients[mirror], tone), colour)
        levels.dots(azimuths, measured_level(measurement, rows, tone) - measured_level(measurement, mirror, tone), colour)
    height = levels.top + PANEL + 40
    legend = [text(WIDTH - RIGHT - 160 + 80 * k, levels.top - 10, f"{tone:g} Hz", 12, "end", colour, "bold")
              for k, (tone, colour) in enumerate(TONES)]
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" viewBox="0 0 {WIDTH} {height}" '
        'font-family="Helvetica, Arial, \'DejaVu Sans\', sans-serif" fill="none">',
        "<title>The built-in set between the ears, against the measurement</title>",
        '<rect width="100%" height="100%" fill="#ffffff"/>',
        text(LEFT, 30, "Between the ears, horizontal plane", 16, weight="bold"),
        text(LEFT, 52, "lines: the built-in set; rings: the measurement", 12, colour=GREY),
        *legend, *times.lines, *levels.lines]) + "\n</svg>\n"


def main():
    home = Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--kemar", type=Path, default=home / "libquilo/data/kemar")
    parser.add_argument("--out", type=Path, default=home / "docs/binaural-kemar.svg")
    options = parser.parse_args()
    options.out.write_text(draw(options.kemar), encoding="utf-8")


if __name__ == "__main__":
    main()
