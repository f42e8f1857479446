#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws what the subtypes nearfield and diffuse of the type binaural do, from what the module plays.

    draw_nearfield_plots.py [--host build/release/bin/quilo-host] [--out docs]

binaural-nearfield.svg: level at both ears and delay between them over the distance of a source on
the right. binaural-coherence.svg: the coherence of the ears for two independent sources, and its
target. Needs Debian's python3-numpy.
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

FRAMES = 4800  # of one click
DISTANCES = np.geomspace(0.2, 2.0, 40)
TONES = ((200.0, "#0072b2"), (1000.0, "#009e73"), (6000.0, "#d55e00"))
BLACK, GREY, FAINT = "#1f2933", "#66727f", "#e4e9ee"
WIDTH, LEFT, RIGHT, PANEL = 760, 64, 40, 210


def answers(host, box, lines, clicks, rate=44100):
    """What both ears hear of clicks: clicks x ears x samples. `clicks` are inlets, one a stretch of FRAMES."""
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        inputs = np.zeros((FRAMES * len(clicks), max(clicks) + 1), dtype="<i2")
        inputs[np.arange(len(clicks)) * FRAMES + FRAMES // 2, clicks] = 16384
        with wave.open(str(folder / "in.wav"), "wb") as f:
            f.setnchannels(inputs.shape[1])
            f.setsampwidth(2)
            f.setframerate(rate)
            f.writeframes(inputs.tobytes())
        (folder / "script.txt").write_text("\n".join([f"object quilo.pan~ {box}", "interpolationtime 0", *lines]) + "\n")
        subprocess.run([host, "--quiet", "--strict", "--in", folder / "in.wav", "--out", folder / "out.wav",
                        folder / "script.txt"], check=True, stdout=subprocess.DEVNULL)
        channels, _, samples = read_float_wav(folder / "out.wav")
        ears = np.frombuffer(samples, dtype=np.float32).reshape(-1, channels)[:FRAMES * len(clicks)]
        return 2.0 * ears.reshape(len(clicks), FRAMES, 2)[:, FRAMES // 2:].transpose(0, 2, 1)


def spectrum(responses, hz, rate=44100):
    return responses @ np.exp(-2j * np.pi * np.outer(np.arange(responses.shape[-1]) / rate, hz))


def text(x, y, words, size=12, anchor="start", colour=BLACK, weight="normal"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" fill="{colour}" '
            f'stroke="none" font-weight="{weight}">{words}</text>')


class Panel:
    """Curves over a horizontal axis with places from 0 to 1 and words at some of them."""

    def __init__(self, top, title, low, high, step, ticks):
        self.top, self.low, self.high = top, low, high
        self.lines = [text(LEFT, top - 10, title, 13, weight="bold")]
        for value in np.arange(low, high + 1e-9, step):
            y = self._y(value)
            self.lines.append(f'<line x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y:.1f}" y2="{y:.1f}" stroke="{FAINT}"/>')
            self.lines.append(text(LEFT - 8, y + 4, f"{value:g}", 11, "end", GREY))
        for place, word in ticks:
            self.lines.append(text(self._x(place), top + PANEL + 18, word, 11, "middle", GREY))

    def _x(self, place):
        return LEFT + place * (WIDTH - LEFT - RIGHT)

    def _y(self, value):
        return self.top + (self.high - value) / (self.high - self.low) * PANEL

    def line(self, places, values, colour, dash=""):
        spots = " ".join(f"{self._x(p):.1f},{self._y(v):.1f}" for p, v in zip(places, np.clip(values, self.low, self.high)))
        self.lines.append(f'<polyline points="{spots}" stroke="{colour}" stroke-width="1.8" stroke-dasharray="{dash}"/>')


def page(title, subtitle, height, lines):
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" viewBox="0 0 {WIDTH} {height}" '
        'font-family="Helvetica, Arial, \'DejaVu Sans\', sans-serif" fill="none">',
        f"<title>{title}</title>", '<rect width="100%" height="100%" fill="#ffffff"/>',
        text(LEFT, 30, title, 16, weight="bold"), text(LEFT, 52, subtitle, 12, colour=GREY), *lines]) + "\n</svg>\n"


def along(values):
    return np.log(np.asarray(values) / DISTANCES[0]) / np.log(DISTANCES[-1] / DISTANCES[0])


def draw_nearfield(host):
    lines = ["distanceattenuation 0"]
    lines += [f"at {k * FRAMES / 44100:.4f} source 1 aed 90 0 {r:.4f}" for k, r in enumerate(DISTANCES)]
    heard = answers(host, "1 2 binaural nearfield", lines, [0] * len(DISTANCES))
    tones = np.array([hz for hz, _ in TONES])
    levels = 20.0 * np.log10(np.abs(spectrum(heard, tones)))
    ticks = [(along([r])[0], f"{r:g} m") for r in (0.2, 0.3, 0.5, 0.7, 1.0, 1.4, 2.0)]
    level = Panel(104, "Level, dB: right ear lines, left ear dashes", -30, 20, 10, ticks)
    for k, (_, colour) in enumerate(TONES):
        level.line(along(DISTANCES), levels[:, 1, k], colour)
        level.line(along(DISTANCES), levels[:, 0, k], colour, "5 4")
    legend = [text(WIDTH - RIGHT - 160 + 80 * k, 94, f"{hz:g} Hz", 12, "end", colour, "bold")
              for k, (hz, colour) in enumerate(TONES)]
    # Without filters the delay is what is left; its phase at a low frequency is short of a turn.
    bare = answers(host, "1 2 binaural nearfield", [f"{word} 0" for word in (
        "hrtffilters", "nfcompensationfilters", "gainscorrection")] + lines, [0] * len(DISTANCES))
    ears = spectrum(bare, np.array([300.0]))[:, :, 0]
    delay = np.angle(ears[:, 1] / ears[:, 0]) / (2 * np.pi * 300.0) * 1e3
    time = Panel(104 + PANEL + 70, "Arrival at the left ear minus arrival at the right one, ms", 0.6, 0.8, 0.05, ticks)
    time.line(along(DISTANCES), delay, BLACK)
    return page("A source on the right comes near", "as the module plays it, without distance attenuation",
                time.top + PANEL + 40, [*legend, *level.lines, *time.lines])


def draw_coherence(host):
    highest = 12000.0
    hz = np.linspace(20.0, highest, 600)
    ticks = [(f / highest, f"{f / 1000:g} kHz") for f in (0, 1000, 2000, 3000, 4000, 6000, 8000, 10000, 12000)]
    panel = Panel(94, "Coherence of the ears for two independent sources", -0.5, 1.0, 0.25, ticks)
    for rate, colour in ((48000, "#0072b2"), (96000, "#d55e00")):
        heard = spectrum(answers(host, "2 2 binaural diffuse", [], [0, 1], rate), hz, rate)
        cross = np.sum(heard[:, 0] * np.conj(heard[:, 1]), axis=0)
        powers = np.sum(np.abs(heard) ** 2, axis=0)
        panel.line(hz / highest, np.real(cross) / np.sqrt(powers[0] * powers[1]), colour)
    panel.line(hz / highest, np.sinc(hz / 550.0) * np.clip(1.0 - hz / 2700.0, 0.0, None), BLACK, "5 4")
    legend = [text(WIDTH - RIGHT - 220, 94 - 10, "48 kHz", 12, "end", "#0072b2", "bold"),
              text(WIDTH - RIGHT - 140, 94 - 10, "96 kHz", 12, "end", "#d55e00", "bold"),
              text(WIDTH - RIGHT, 94 - 10, "dashes: a diffuse field", 12, "end", BLACK)]
    return page("Two ears in a diffuse field", "as the module plays it", panel.top + PANEL + 40, [*legend, *panel.lines])


def main():
    home = Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--host", type=Path, default=home / "build/release/bin/quilo-host")
    parser.add_argument("--out", type=Path, default=home / "docs")
    options = parser.parse_args()
    (options.out / "binaural-nearfield.svg").write_text(draw_nearfield(options.host), encoding="utf-8")
    (options.out / "binaural-coherence.svg").write_text(draw_coherence(options.host), encoding="utf-8")


if __name__ == "__main__":
    main()
