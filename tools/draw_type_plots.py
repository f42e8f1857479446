#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws what polar plots of gains do not show of a panning type, from what the module plays.

    draw_type_plots.py [--host build/release/bin/quilo-host] [--docs docs]

types/TYPE-line.svg: the level of every outlet while a source goes straight through the middle.
types/binaural-SUBTYPE.svg: levels at both ears and the delay between them round the listener.
types/ab-delay.svg, subwoofers-filter.svg, nfchoa-orders.svg, diffuse-clicks.svg: delays and filters.
Needs Debian's python3-numpy.
"""
from played import answers, spectrum
from svg import BLACK, BLUE, COLOURS, GREEN, ORANGE, WIDTH, Panel, drawing_options, headline, page, write

import numpy as np

ROUND = np.arange(-180, 181, 5)
ROUND_TICKS = [((a + 180) / 360, f"{a}° {word}") for a, word in
               ((-180, "back"), (-90, "left"), (0, "front"), (90, "right"), (180, "back"))]
LEVEL_HZ = ((500.0, BLUE), (2000.0, GREEN), (8000.0, ORANGE))
AS_PLAYED = "as the module plays it"

# What goes along a line: type, box, statements, what to look at.
LINES = (
    ("dbap", "1 4 dbap", ("host layout quad",), "every loudspeaker sounds everywhere, the nearer the louder"),
    ("dbap3d", "1 8 dbap3d", ("host layout cube",), "four loudspeakers below, four above: half-way up those of a pair sound alike"),
    ("knn", "1 4 knn", ("host layout quad", "source 1 numneighbors 2"), "two neighbours: the others are silent"),
    ("vdbap", "1 8 vdbap", ("host layout cube",), "by distance inside 0.7 m, by direction beyond 1.3 m, a mixture between"),
    ("panr", "1 4 panr", ("host layout quad",), "through the middle, where all sound alike, with constant energy"),
    ("surround", "1 4 surround", (), "left, centre, right, rear: at the listener all are heard"),
    ("vbap2d", "1 4 vbap2d", ("host layout quad",), "a law by direction alone: near the listener everything changes at once"),
)
# What goes round the head: subtype, distance, what to look at.
HEADS = (
    ("direct", 2.0, "the built-in set: measured levels and delays, one direction after the other"),
    ("continuous", 2.0, "the same filters, mixed: no steps"),
    ("nearfield", 0.3, "a source at 0.3 m: the ears differ in the bass, too"),
    ("sphericalheadmodel", 2.0, "a rigid sphere: front and back alike"),
    ("snowman", 2.0, "the sphere with a torso"),
    ("early", 2.0, "a delay and a gain for each ear: all frequencies alike"),
)


def decibels(values):
    return 20.0 * np.log10(np.abs(values) + 1e-9)


def delays(heard, low, high):
    """By how many ms the first of two outlets is later: what fits the phase between them best, which is short of a
    turn in the band given."""
    hz = np.linspace(low, high, 25)
    first, second = spectrum(heard, hz).transpose(1, 0, 2)
    phases = np.unwrap(np.angle(second * np.conj(first)), axis=1)
    return phases @ hz / (2 * np.pi * (hz @ hz)) * 1e3


def octaves(hz, low, high):
    """The place of a frequency on a logarithmic axis."""
    return np.log(np.asarray(hz) / low) / np.log(high / low)


def frequency_ticks(low, high):
    return [(octaves(f, low, high), f"{f} Hz" if f < 1000 else f"{f // 1000} kHz")
            for f in (10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000) if low <= f <= high]


def single(title, subtitle, panel):
    return page(WIDTH, panel.bottom + 40, title, headline(title, subtitle) + panel.lines)


def draw_line(host, box, statements, remark):
    xs = np.linspace(-2.0, 2.0, 81)
    gains = answers(host, box, statements, [f"xyz {x:.4f} 0.3 0" for x in xs], frames=256).max(axis=2)
    ticks = [((x + 2) / 4, f"{x:g} m") for x in (-2, -1, 0, 1, 2)]
    panel = Panel(94, "Gain of each outlet", 0, 1, 0.25, ticks, rules=True)
    for k, row in enumerate(gains.T):
        panel.line((xs + 2) / 4, row, COLOURS[k], "6 4" if k >= 4 else "")
    panel.legend([(str(k + 1), COLOURS[k]) for k in range(gains.shape[1])], step=24)
    return single(f"{box.split()[2]}: from left to right, 0.3 m in front of the middle", remark, panel)


def draw_head(host, subtype, distance, remark):
    heard = answers(host, f"1 2 binaural {subtype}", (), [f"aed {a} 0 {distance}" for a in ROUND])
    tones = np.array([hz for hz, _ in LEVEL_HZ])
    levels = decibels(spectrum(heard, tones))
    places = (ROUND + 180) / 360
    level = Panel(104, "Level at the right ear lines, at the left one dashes, dB", -30, 20, 10, ROUND_TICKS, rules=True)
    for k, (_, colour) in enumerate(LEVEL_HZ):
        level.line(places, levels[:, 1, k], colour)
        level.line(places, levels[:, 0, k], colour, "5 4")
    level.legend([(f"{hz:g} Hz", colour) for hz, colour in LEVEL_HZ])
    time = Panel(level.bottom + 70, "Arrival at the left ear minus arrival at the right one, ms (300 to 900 Hz)", -1.0, 1.0, 0.5,
                 ROUND_TICKS, rules=True)
    time.line(places, delays(heard, 300.0, 900.0), BLACK)
    title = f"binaural {subtype}: round the listener at {distance:g} m"
    return page(WIDTH, time.bottom + 40, title, headline(title, remark) + level.lines + time.lines)


def draw_ab(host):
    heard = answers(host, "1 2 ab", (), [f"aed {a} 0 1" for a in ROUND])
    both = np.abs(heard).max(axis=2).min(axis=1) > 1e-3  # at 135 degrees one output is silent
    panel = Panel(94, "Arrival at output 1 minus arrival at output 2, ms", -0.6, 0.6, 0.2, ROUND_TICKS, rules=True)
    panel.line((ROUND[both] + 180) / 360, delays(heard[both], 100.0, 600.0), BLACK)
    return single("ab: the delay between the outputs", AS_PLAYED, panel)


def draw_subwoofers(host):
    low, high = 20.0, 2000.0
    hz = np.geomspace(low, high, 200)
    panel = Panel(94, "Level of a source in front of output 1, dB", -60, 0, 10, frequency_ticks(low, high), rules=True)
    cutoffs = ((60, BLUE), (125, BLACK), (250, ORANGE))
    for cutoff, colour in cutoffs:
        heard = answers(host, "1 4 subwoofers", [f"cutoff {cutoff}"], ["azim -45"], frames=48000)
        panel.line(octaves(hz, low, high), decibels(spectrum(heard, hz))[0, 0], colour)
    panel.legend([(f"{cutoff} Hz", colour) for cutoff, colour in cutoffs])
    return single("subwoofers: the low-pass of every source, by its cut-off frequency", AS_PLAYED, panel)


def draw_nfchoa(host):
    low, high = 20.0, 5000.0
    hz = np.geomspace(low, high, 200)
    colours = (BLACK, BLUE, GREEN, ORANGE)
    plain = decibels(spectrum(answers(host, "1 7 hoa2d", (), ["azim 90"]), hz))[0]
    panels, top = [], 104
    for distance, words in ((0.5, "source at 0.5 m, nearer"), (4.0, "source at 4 m, farther")):
        panel = Panel(top, f"Level, dB: {words}", -30, 30, 10, frequency_ticks(low, high), rules=True)
        for switch, dash in ((0, "5 4"), (1, "")):
            heard = answers(host, "1 7 nfchoa2d", ["speakersradius 2", f"nfchighpass {switch}"], [f"aed 90 0 {distance}"],
                            frames=96000)
            levels = decibels(spectrum(heard, hz))[0]
            for order, channel in enumerate((0, 2, 4, 6)):  # cosines: not 0 on the right
                panel.line(octaves(hz, low, high), levels[channel] - plain[channel], colours[order], dash)
        panel.legend([(f"order {k}", colours[k]) for k in range(4)], step=70)
        panels.append(panel)
        top = panel.bottom + 70
    title = "nfchoa2d: what distance does to each order, loudspeakers at 2 m"
    return page(WIDTH, panels[-1].bottom + 40, title,
                headline(title, "against hoa2d, as the module plays it; dashes: without the high-pass") +
                [line for panel in panels for line in panel.lines])


def draw_diffuse(host):
    heard = answers(host, "1 4 vbap2d diffuse", (), ["azim 0"])[0]
    shown = 1440  # samples: 30 ms
    ticks = [(t / 30, f"{t} ms") for t in (0, 5, 10, 15, 20, 25, 30)]
    panel = Panel(94, "What four outlets make of one click, one above the other", 0, 4, 1, ticks, rules=True, numbers=False)
    for k, row in enumerate(heard[:, :shown]):
        panel.line(np.arange(shown) / shown, 3.5 - k + row / np.abs(heard).max() * 0.6, COLOURS[k])
    return single("vbap2d diffuse: the same spectrum, other times", AS_PLAYED, panel)


def main():
    options = drawing_options(__doc__)
    pictures = {f"{name}-line": draw_line(options.host, *rest) for name, *rest in LINES}
    pictures |= {f"binaural-{subtype}": draw_head(options.host, subtype, *rest) for subtype, *rest in HEADS}
    pictures |= {"ab-delay": draw_ab(options.host), "subwoofers-filter": draw_subwoofers(options.host),
                 "nfchoa-orders": draw_nfchoa(options.host), "diffuse-clicks": draw_diffuse(options.host)}
    for name, content in pictures.items():
        write(options.docs / "types" / f"{name}.svg", content)


if __name__ == "__main__":
    main()
