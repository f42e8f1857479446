#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws what the subtypes nearfield and diffuse of the type binaural do, from what the module plays.

    draw_nearfield_plots.py [--host build/release/bin/quilo-host] [--docs docs]

binaural-nearfield.svg: level at both ears and delay between them over the distance of a source on
the right. binaural-coherence.svg: the coherence of the ears for two independent sources, and its
target. Needs Debian's python3-numpy.
"""
from played import answers, spectrum
from svg import BLACK, BLUE, GREEN, ORANGE, RIGHT, WIDTH, Panel, drawing_options, headline, page, text, write

import numpy as np

RATE = 44100  # that of the built-in set
DISTANCES = np.geomspace(0.2, 2.0, 40)
TONES = ((200.0, BLUE), (1000.0, GREEN), (6000.0, ORANGE))


def along(values):
    return np.log(np.asarray(values) / DISTANCES[0]) / np.log(DISTANCES[-1] / DISTANCES[0])


def draw_nearfield(host):
    places = [f"aed 90 0 {r:.4f}" for r in DISTANCES]
    heard = answers(host, "1 2 binaural nearfield", ["distanceattenuation 0"], places, rate=RATE)
    tones = np.array([hz for hz, _ in TONES])
    levels = 20.0 * np.log10(np.abs(spectrum(heard, tones, RATE)))
    ticks = [(along([r])[0], f"{r:g} m") for r in (0.2, 0.3, 0.5, 0.7, 1.0, 1.4, 2.0)]
    level = Panel(104, "Level, dB: right ear lines, left ear dashes", -30, 20, 10, ticks)
    for k, (_, colour) in enumerate(TONES):
        level.line(along(DISTANCES), levels[:, 1, k], colour)
        level.line(along(DISTANCES), levels[:, 0, k], colour, "5 4")
    level.legend([(f"{hz:g} Hz", colour) for hz, colour in TONES])
    # Without filters the delay is what is left; its phase at a low frequency is short of a turn.
    bare = answers(host, "1 2 binaural nearfield", [f"{word} 0" for word in (
        "hrtffilters", "nfcompensationfilters", "gainscorrection", "distanceattenuation")], places, rate=RATE)
    ears = spectrum(bare, np.array([300.0]), RATE)[:, :, 0]
    delay = np.angle(ears[:, 1] / ears[:, 0]) / (2 * np.pi * 300.0) * 1e3
    time = Panel(level.bottom + 70, "Arrival at the left ear minus arrival at the right one, ms", 0.6, 0.8, 0.05, ticks)
    time.line(along(DISTANCES), delay, BLACK)
    title = "A source on the right comes near"
    return page(WIDTH, time.bottom + 40, title,
                headline(title, "as the module plays it, without distance attenuation") + level.lines + time.lines)


def draw_coherence(host):
    highest = 12000.0
    hz = np.linspace(20.0, highest, 600)
    ticks = [(f / highest, f"{f / 1000:g} kHz") for f in (0, 1000, 2000, 3000, 4000, 6000, 8000, 10000, 12000)]
    panel = Panel(94, "Coherence of the ears for two independent sources", -0.5, 1.0, 0.25, ticks)
    for rate, colour in ((48000, BLUE), (96000, ORANGE)):
        heard = spectrum(answers(host, "2 2 binaural diffuse", (), inlets=(0, 1), rate=rate), hz, rate)
        cross = np.sum(heard[:, 0] * np.conj(heard[:, 1]), axis=0)
        powers = np.sum(np.abs(heard) ** 2, axis=0)
        panel.line(hz / highest, np.real(cross) / np.sqrt(powers[0] * powers[1]), colour)
    panel.line(hz / highest, np.sinc(hz / 550.0) * np.clip(1.0 - hz / 2700.0, 0.0, None), BLACK, "5 4")
    panel.lines += [text(WIDTH - RIGHT - 220, 94 - 10, "48 kHz", 12, "end", BLUE, "bold"),
                    text(WIDTH - RIGHT - 140, 94 - 10, "96 kHz", 12, "end", ORANGE, "bold"),
                    text(WIDTH - RIGHT, 94 - 10, "dashes: a diffuse field", 12, "end", BLACK)]
    title = "Two ears in a diffuse field"
    return page(WIDTH, panel.bottom + 40, title, headline(title, "as the module plays it") + panel.lines)


if __name__ == "__main__":
    options = drawing_options(__doc__)
    write(options.docs / "binaural-nearfield.svg", draw_nearfield(options.host))
    write(options.docs / "binaural-coherence.svg", draw_coherence(options.host))
