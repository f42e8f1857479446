#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws what the right ear hears of elevation: a head alone, and the same head on a torso.

    draw_elevation_plots.py [--host build/release/bin/quilo-host] [--out docs/binaural-elevation.svg]

For each subtype one object is made and a click is played from every elevation of a half circle in
front of the listener, from below to above; what comes out is drawn as level over frequency and
elevation. Needs Debian's python3-numpy.
"""
import argparse
import subprocess
import sys
import tempfile
import wave
from pathlib import Path

sys.dont_write_bytecode = True
from wav_samples import read_float_wav

import numpy as np

RATE, FRAMES = 48000, 4800  # of one elevation
STEP_DEG, LOWEST_HZ, HIGHEST_HZ = 3, 100.0, 12000.0
ELEVATIONS = np.arange(-90, 91, STEP_DEG)
FREQUENCIES = np.geomspace(LOWEST_HZ, HIGHEST_HZ, 120)
SUBTYPES = (("sphericalheadmodel", "A head alone: nothing tells front from above or below"),
            ("snowman", "On a torso: notches that move with the elevation, and a shadow from below"))
QUIETEST_DB, LOUDEST_DB = -15.0, 6.0
WIDTH, LEFT, RIGHT, PANEL, TOP = 760, 84, 100, 230, 70
BLACK, GREY = "#1f2933", "#66727f"


def click_file(name):
    clicks = np.zeros(FRAMES * len(ELEVATIONS), dtype="<i2")
    clicks[FRAMES // 2::FRAMES] = 16384
    with wave.open(str(name), "wb") as f:
        f.setnchannels(1)
        f.setsampwidth(2)
        f.setframerate(RATE)
        f.writeframes(clicks.tobytes())


def levels(host, subtype, folder):
    """Decibels at the right ear, a row per elevation."""
    script = [f"object quilo.pan~ 1 2 binaural {subtype}", "interpolationtime 0"]
    script += [f"at {k * FRAMES / RATE:.3f} source 1 aed 0 {elevation} 2" for k, elevation in enumerate(ELEVATIONS)]
    click_file(folder / "clicks.wav")
    (folder / "script.txt").write_text("\n".join(script) + "\n", encoding="utf-8")
    subprocess.run([host, "--quiet", "--strict", "--in", folder / "clicks.wav", "--out", folder / "ears.wav",
                    folder / "script.txt"], check=True, stdout=subprocess.DEVNULL)
    channels, _, samples = read_float_wav(folder / "ears.wav")
    right = np.frombuffer(samples, dtype=np.float32)[1::channels][:FRAMES * len(ELEVATIONS)]
    responses = right.reshape(len(ELEVATIONS), FRAMES)[:, FRAMES // 2:] * 2.0
    times = np.arange(FRAMES - FRAMES // 2) / RATE
    return 20.0 * np.log10(np.abs(responses @ np.exp(-2j * np.pi * np.outer(times, FREQUENCIES))) + 1e-6)


def colour(level):
    """From dark blue over white to dark orange, white at 0 dB."""
    if level < 0.0:
        part, end = min(level / QUIETEST_DB, 1.0), (8, 48, 107)
    else:
        part, end = min(level / LOUDEST_DB, 1.0), (166, 54, 3)
    return "#" + "".join(f"{round(255 + part * (v - 255)):02x}" for v in end)


def text(x, y, words, size=12, anchor="start", fill=BLACK, weight="normal"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" fill="{fill}" '
            f'font-weight="{weight}">{words}</text>')


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
    with tempfile.TemporaryDirectory() as folder:
        for k, (subtype, title) in enumerate(SUBTYPES):
            lines += panel(TOP + 30 + k * (PANEL + 70), title, levels(host, subtype, Path(folder)))
    for k, level in enumerate(np.arange(LOUDEST_DB, QUIETEST_DB - 1, -3.0)):
        lines.append(f'<rect x="{WIDTH - 84}" y="{TOP + 30 + 22 * k}" width="18" height="22" fill="{colour(level)}" '
                     f'stroke="{GREY}" stroke-width="0.3"/>')
        lines.append(text(WIDTH - 60, TOP + 45 + 22 * k, f"{level:g} dB", 11, fill=GREY))
    height = TOP + 2 * (PANEL + 70) + 10
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" viewBox="0 0 {WIDTH} {height}" '
        'font-family="Helvetica, Arial, \'DejaVu Sans\', sans-serif">',
        "<title>Level at the right ear over frequency and elevation</title>",
        '<rect width="100%" height="100%" fill="#ffffff"/>',
        text(LEFT, 30, "Level at the right ear, source in the median plane at 2 m", 16, weight="bold"),
        text(LEFT, 52, "as the module plays it", 12, fill=GREY), *lines]) + "\n</svg>\n"


def main():
    home = Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--host", type=Path, default=home / "build/release/bin/quilo-host")
    parser.add_argument("--out", type=Path, default=home / "docs/binaural-elevation.svg")
    options = parser.parse_args()
    options.out.write_text(draw(options.host), encoding="utf-8")


if __name__ == "__main__":
    main()
