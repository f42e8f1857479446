#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws what the right ear hears of elevation: a head alone, and the same head on a torso.

    draw_elevation_plots.py [--host build/release/bin/quilo-host] [--docs docs]       writes binaural-elevation.svg

For each subtype one object is made and a click is played from every elevation of a half circle in
front of the listener, from below to above; what comes out is drawn as level over frequency and
elevation. Needs Debian's python3-numpy.
"""
from played import answers, spectrum
from svg import GREY, drawing_options, headline, page, text, write

import numpy as np

STEP_DEG, LOWEST_HZ, HIGHEST_HZ = 3, 100.0, 12000.0
ELEVATIONS = np.arange(-90, 91, STEP_DEG)
FREQUENCIES = np.geomspace(LOWEST_HZ, HIGHEST_HZ, 120)
SUBTYPES = (("sphericalheadmodel", "A head alone: nothing tells front from above or below"),
            ("snowman", "On a torso: notches that move with the elevation, and a shadow from below"))
QUIETEST_DB, LOUDEST_DB = -15.0, 6.0
WIDTH, LEFT, RIGHT, PANEL, TOP = 760, 84, 100, 230, 70


def levels(host, subtype):
    """Decibels at the right ear, a row per elevation."""
    heard = answers(host, f"1 2 binaural {subtype}", (), [f"aed 0 {elevation} 2" for elevation in ELEVATIONS])
    return 20.0 * np.log10(np.abs(spectrum(heard[:, 1], FREQUENCIES)) + 1e-6)


def colour(level):
    """From dark blue over white to dark orange, white at 0 dB."""
    if level < 0.0:
        part, end = min(level / QUIETEST_DB, 1.0), (8, 48, 107)
    else:
        part, end = min(level / LOUDEST_DB, 1.0), (166, 54, 3)
    return "#" + "".join(f"{round(255 + part * (v - 255)):02x}" for v in end)


def panel(top, title, rows):
    width = (WIDTH - LEFT - RIGHT) / len(FREQUENCIES)
    height = PANEL / len(ELEVATIONS)
    lines = [text(LEFT, top - 10, title, 13, weight="bold")]
    for r, row in enumerate(np.clip(np.round(rows), QUIETEST_DB, LOUDEST_DB)):
        y = top + PANEL - (r + 1) * height
        ends = np.append(np.flatnonzero(np.diff(row)) + 1, len(row))
        for begin, end in zip(np.append(0, ends[:-1]), ends):  # runs of one level
            lines.append(f'<rect x="{LEFT + begin * width:.1f}" y="{y:.1f}" width="{(end - begin) * width + 0.3:.1f}" '
                         f'height="{height + 0.3:.1f}" fill="{colour(row[begin])}"/>')
    for elevation, word in ((-90, "below"), (-45, ""), (0, "ahead"), (45, ""), (90, "above")):
        y = top + PANEL * (90 - elevation) / 180
        lines.append(text(LEFT - 6, y + 4, f"{elevation}° {word}".strip(), 11, "end", GREY))
    for hz in (100, 200, 500, 1000, 2000, 5000, 10000):
        x = LEFT + (WIDTH - LEFT - RIGHT) * np.log(hz / LOWEST_HZ) / np.log(HIGHEST_HZ / LOWEST_HZ)
        lines.append(text(x, top + PANEL + 18, f"{hz} Hz" if hz < 1000 else f"{hz // 1000} kHz", 11, "middle", GREY))
    return lines


def draw(host):
    lines = []
    for k, (subtype, title) in enumerate(SUBTYPES):
        lines += panel(TOP + 30 + k * (PANEL + 70), title, levels(host, subtype))
    for k, level in enumerate(np.arange(LOUDEST_DB, QUIETEST_DB - 1, -3.0)):
        lines.append(f'<rect x="{WIDTH - 84}" y="{TOP + 30 + 22 * k}" width="18" height="22" fill="{colour(level)}" '
                     f'stroke="{GREY}" stroke-width="0.3"/>')
        lines.append(text(WIDTH - 60, TOP + 45 + 22 * k, f"{level:g} dB", 11, colour=GREY))
    return page(WIDTH, TOP + 2 * (PANEL + 70) + 10, "Level at the right ear over frequency and elevation",
                headline("Level at the right ear, source in the median plane at 2 m", "as the module plays it", LEFT) + lines)


if __name__ == "__main__":
    options = drawing_options(__doc__)
    write(options.docs / "binaural-elevation.svg", draw(options.host))
