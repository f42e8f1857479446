#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Draws the gains of every panning law round the circle, as the module plays them, and their gallery.

    draw_polar_plots.py [--host build/release/bin/quilo-host] [--docs docs]

For each law one object is made, a source with a constant signal goes once round the listener in steps
of 2 degrees, and what has settled at the outlets after each step is drawn: docs/polar/NAME.svg and
docs/gallery.md. Needs Debian's python3-numpy.
"""
import array
import math

from played import play
from svg import COLOURS, FAINT, GREY, LIGHT, drawing_options, headline, page, text, write

# name, title, what to look at, box text, statements before the turn, elevation, labels of outlets that are
# no loudspeakers
LAWS = (
    ("xy", "Coincident pair", "Two cardioids at right angles.",
     "1 2 xy", (), 0, ("L", "R")),
    ("ms", "Mid and side", "A cardioid to the front and a sideways eight; the dashed lobe is negative.",
     "1 2 ms", (), 0, ("M", "S")),
    ("ab", "Spaced pair", "Each microphone hears the sources on its side louder; the delays do not show here.",
     "1 2 ab", (), 0, ("L", "R")),
    ("surround", "Surround", "A frontal arc with a centre, and one rear loudspeaker.",
     "1 4 surround", (), 0, ("L", "C", "R", "S")),
    ("angular", "Angular", "Sine and cosine between neighbours.",
     "1 5 angular", ("host layout 5.0",), 0, ()),
    ("panr", "Recursive", "Bilinear between the corners of a square.",
     "1 4 panr", ("host layout quad",), 0, ()),
    ("vbap2d", "Vector base, amplitude", "Pairs of an uneven ring; between far ones the gains bend less.",
     "1 5 vbap2d", ("host layout 5.0",), 0, ()),
    ("vbip2d", "Vector base, intensity", "The same ring: the energy points at the source instead of the amplitude.",
     "1 5 vbip2d", ("host layout 5.0",), 0, ()),
    ("vbap", "Vector base, triplets", "A dome, the source 20 degrees up: at most three loudspeakers sound at a time.",
     "1 12 vbap", ("speakers ae -22.5 0 22.5 0 67.5 0 112.5 0 157.5 0 -157.5 0 -112.5 0 -67.5 0 "
                   "-45 45 45 45 135 45 -135 45",), 20, ()),
    ("vbip", "Vector base, intensity, triplets", "The same dome and source.",
     "1 12 vbip", ("speakers ae -22.5 0 22.5 0 67.5 0 112.5 0 157.5 0 -157.5 0 -112.5 0 -67.5 0 "
                   "-45 45 45 45 135 45 -135 45",), 20, ()),
    ("dbap", "Distance based", "Every loudspeaker sounds, the near ones louder.",
     "1 8 dbap", ("host layout octagon",), 0, ()),
    ("dbap-spread", "Distance based, spread 30", "Spread flattens what distance makes.",
     "1 8 dbap", ("host layout octagon", "source 1 spread 30"), 0, ()),
    ("vdbap", "Vector and distance based", "By distance near the centre, by direction outside; a mixture where the loudspeakers stand, as here.",
     "1 12 vdbap", ("speakers ae -22.5 0 22.5 0 67.5 0 112.5 0 157.5 0 -157.5 0 -112.5 0 -67.5 0 "
                    "-45 45 45 45 135 45 -135 45",), 20, ()),
    ("knn", "Nearest neighbours", "Three at a time, by inverse distance.",
     "1 8 knn", ("host layout octagon",), 0, ()),
    ("spcap", "Placement corrected", "Wide lobes, weighted against crowded loudspeakers.",
     "1 5 spcap", ("host layout 5.0",), 0, ()),
    ("subwoofers", "Subwoofers", "Well below the cut-off frequency: pairs as in vbap2d.",
     "1 4 subwoofers", ("host layout quad",), 0, ()),
    ("bformat", "B-format", "X points to the right and Y to the front, as all positions do here; Z is silent in the plane.",
     "1 4 bformat", (), 0, ("W", "X", "Y", "Z")),
    ("hoa2d", "Ambisonics in the plane", "Order 3, SN2D: sines and cosines of multiples of the angle.",
     "1 7 hoa2d", (), 0, ("W", "Y", "X", "V", "U", "Q", "P")),
    ("hoa3d", "Ambisonics in space", "Order 2, SN3D, the source 20 degrees up.",
     "1 9 hoa3d", (), 20, ("W", "Y", "Z", "X", "V", "T", "R", "S", "U")),
)

STEP_DEG = 2
FRAMES = 2048  # of one step: a vector, long enough for every filter and ramp to settle
RATE = 48000
WIDTH, HEIGHT, CENTRE_X, CENTRE_Y, RADIUS = 460, 430, 200, 232, 150


def steps():
    return range(0, 360, STEP_DEG)


def turn(host, law):
    """(gains of each step, label and azimuth of each loudspeaker that has one)"""
    _, _, _, box, before, elevation, _ = law
    script = [f"object quilo.pan~ {box} @interpolationtime 0", *before, "getspeakerspositions"]
    # Settled before the first step counts: the turn begins one step late.
    script += [f"at {(k + 0.5) * FRAMES / RATE:.6f} source 1 aed {azimuth} {elevation} 1"
               for k, azimuth in enumerate([0, *steps()])]
    halves = array.array("h", [0x4000] * ((360 // STEP_DEG + 1) * FRAMES)).tobytes()
    channels, samples, lines = play(host, script, halves, RATE, options=("--vector", str(FRAMES)))
    gains = [[2 * samples[((k + 2) * FRAMES - 1) * channels + c] for c in range(channels)] for k in range(360 // STEP_DEG)]
    loudspeakers = []
    for line in lines:
        words = line.split()
        if words[0] == "layout:":
            loudspeakers.append((words[2], float(words[3])))
        elif words[:2] == ["outlet:", "speakerspositions"] and not loudspeakers and before:
            numbers = [float(word) for word in words[2:]]
            loudspeakers = [(str(k // 3 + 1), math.degrees(math.atan2(numbers[k], numbers[k + 1])))
                            for k in range(0, len(numbers), 3)]
    return gains, loudspeakers


def spot(azimuth, radius):
    angle = math.radians(azimuth)
    return f"{CENTRE_X + radius * math.sin(angle):.1f},{CENTRE_Y - radius * math.cos(angle):.1f}"


def curves(gains, channel, colour, top):
    """The gain over the azimuth, cut where its sign changes; negative parts are dashed."""
    runs = []
    for azimuth, row in zip([*steps(), 360], [*gains, gains[0]]):
        gain, sign = row[channel], row[channel] >= 0
        if not runs or runs[-1][0] != sign:
            runs.append((sign, []))
        runs[-1][1].append(spot(azimuth, RADIUS * abs(gain) / top))
    for sign, spots in runs:
        if len(set(spots)) > 1:
            dashes = "" if sign else ' stroke-dasharray="5 3"'
            yield f'<polyline points="{" ".join(spots)}" stroke="{colour}"{dashes}/>'


def draw(law, gains, loudspeakers):
    _, title, _, box, _, elevation, labels = law
    top = max(1.0, max(abs(gain) for row in gains for gain in row))
    where = f", source {elevation}° up" if elevation else ""
    lines = headline(title, f"quilo.pan~ {box}{where}", 16, (26, 45))
    for part in (0.25, 0.5, 0.75, 1):
        lines.append(f'<circle cx="{CENTRE_X}" cy="{CENTRE_Y}" r="{RADIUS * part:.1f}" stroke="{LIGHT}" stroke-width="1"/>')
        lines.append(text(CENTRE_X + 3, CENTRE_Y - RADIUS * part + 11, f"{top * part:.3g}", 9, colour=GREY))
    for azimuth in range(0, 180, 45):
        ends = spot(azimuth, RADIUS).split(",") + spot(azimuth + 180, RADIUS).split(",")
        lines.append('<line x1="{}" y1="{}" x2="{}" y2="{}" stroke="{}" stroke-width="1"/>'.format(*ends, FAINT))
    for channel, _ in enumerate(gains[0]):
        lines += curves(gains, channel, COLOURS[channel % len(COLOURS)], top)
    if loudspeakers:
        for k, (label, azimuth) in enumerate(loudspeakers):
            x, y = map(float, spot(azimuth, RADIUS + 18).split(","))
            lines.append(text(x, y + 4, label, 12, "middle", COLOURS[k % len(COLOURS)], "bold"))
    else:
        for azimuth, word in ((0, "front"), (90, "right"), (180, "back"), (270, "left")):
            x, y = map(float, spot(azimuth, RADIUS + 20).split(","))
            lines.append(text(x, y + 4, word, 11, "middle", GREY))
    for k, name in enumerate(labels):
        y = 84 + 22 * k
        lines.append(f'<line x1="398" y1="{y}" x2="416" y2="{y}" stroke="{COLOURS[k % len(COLOURS)]}"/>')
        lines.append(text(422, y + 4, name))
    return page(WIDTH, HEIGHT, f"{title}: gains over the azimuth of the source", lines,
                ' stroke-width="2" stroke-linejoin="round"')


def gallery():
    lines = ["<!-- Made by: tools/draw_polar_plots.py -->", "# Gallery", "",
             "How loud each outlet plays a source that goes once round the listener, for every panning law.",
             "The azimuth of the source runs clockwise from the front, the distance from the centre is the gain,",
             "dashed where it is negative. The values are those that the module itself plays:", "",
             "```sh", "# not run: its tests run it with --check", "scripts/pictures", "```", "",
             "`nfchoa2d` and `nfchoa3d` play the gains of `hoa2d` and `hoa3d` for a source as far as the",
             "loudspeakers, with the subtype `diffuse` a source has no direction, and ears hear more than gains:",
             "the pictures of these are on their pages, [types/](types/README.md), as is all else about a type.", ""]
    for name, title, remark, box, before, _, _ in LAWS:
        page_name = box.split()[2]
        lines += [f"## {title}", "", f"{remark} Its page: [{page_name}](types/{page_name}.md).", "", "```quilo", f"object quilo.pan~ {box}", *before, "```", "",
                  f"![{title}](polar/{name}.svg)", ""]
    return "\n".join(lines)


def main():
    options = drawing_options(__doc__)
    for law in LAWS:
        write(options.docs / "polar" / f"{law[0]}.svg", draw(law, *turn(options.host, law)))
    write(options.docs / "gallery.md", gallery())


if __name__ == "__main__":
    main()
