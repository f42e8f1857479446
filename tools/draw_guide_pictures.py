#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the pictures of the user's guide, and that of the walk through the code.

    draw_guide_pictures.py [--docs docs]

guide/coordinates.svg: axes, angles and signs in one picture. guide/room-NAME.svg: kinds of rooms, from above.
guide/walk.svg: the way of a message through the code.
"""
import math

from svg import BLACK, BLUE, FAINT, GREEN, GREY, LIGHT, ORANGE, drawing_options, headline, page, text, write


def turned(x, y, azimuth, radius):
    """A point of a plan: azimuth clockwise from above the middle."""
    a = math.radians(azimuth)
    return x + radius * math.sin(a), y - radius * math.cos(a)


def line(x1, y1, x2, y2, colour, width=1.5, more=""):
    return (f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" stroke-width="{width}" '
            f'stroke-linecap="round"{more}/>')


def polygon(points, fill, more=""):
    return f'<polygon points="{" ".join(f"{x:.1f},{y:.1f}" for x, y in points)}" fill="{fill}"{more}/>'


def circle(x, y, radius, fill="none", stroke="none", more=""):
    return f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius:.1f}" fill="{fill}" stroke="{stroke}"{more}/>'


def tip(x, y, azimuth, colour, size=9):
    """An arrow head at a point, pointing along an azimuth."""
    return polygon([turned(x, y, azimuth, size), turned(x, y, azimuth + 130, size * 0.7), turned(x, y, azimuth - 130, size * 0.7)],
                   colour)


def arrow(x1, y1, x2, y2, colour, width=1.5):
    azimuth = math.degrees(math.atan2(x2 - x1, y1 - y2))
    return [line(x1, y1, x2, y2, colour, width), tip(x2, y2, azimuth, colour)]


def arc(x, y, radius, begin, end, colour):
    """Part of a circle from one azimuth to another, with a head at its end."""
    (x1, y1), (x2, y2) = turned(x, y, begin, radius), turned(x, y, end, radius)
    clockwise = int(end > begin)
    return [f'<path d="M {x1:.1f} {y1:.1f} A {radius} {radius} 0 0 {clockwise} {x2:.1f} {y2:.1f}" stroke="{colour}" '
            'stroke-width="2.5"/>', tip(x2, y2, end + (90 if clockwise else -90), colour)]


def head(x, y, size=13):
    """A listener from above, the nose to the front."""
    return [polygon([(x - size * 0.3, y - size * 0.9), (x, y - size * 1.35), (x + size * 0.3, y - size * 0.9)], GREY),
            circle(x - size, y, size * 0.28, GREY), circle(x + size, y, size * 0.28, GREY), circle(x, y, size, "#ffffff", GREY,
                                                                                                 ' stroke-width="1.5"')]


def coordinates():
    x, y, radius = 222, 272, 130
    lines = headline("Where is a source?", "the object's own signs in black and blue; what other conventions make of the same place", 24)
    lines += [text(x, 86, "from above", 13, "middle", GREY, "bold"), circle(x, y, radius, stroke=LIGHT)]
    lines += arrow(x - 150, y, x + 168, y, BLACK) + arrow(x, y + 150, x, y - 168, BLACK)
    lines += [text(x + 174, y - 8, "x", 15, weight="bold"), text(x + 174, y + 14, "right", 11, colour=GREY),
              text(x + 10, y - 160, "y", 15, weight="bold"), text(x + 24, y - 160, "front", 11, colour=GREY)]
    for azimuth, words, anchor in ((0, "0°", "end"), (45, "45°", "start"), (90, "90°", "start"), (135, "135°", "start"),
                                   (180, "−180°", "start"), (-135, "−135°", "end"), (-90, "−90°", "end"), (-45, "−45°", "end")):
        px, py = turned(x, y, azimuth, radius + 10)
        shift = {0: (-4, -2), 90: (-6, -10), 180: (4, 10), -90: (6, -10)}.get(azimuth, (0, 4))
        lines.append(text(px + shift[0], py + shift[1], words, 12, anchor, BLUE))
        lines.append(line(*turned(x, y, azimuth, radius - 4), *turned(x, y, azimuth, radius + 4), BLUE))
    px, py = turned(x, y, 30, radius * math.cos(math.radians(20)))  # from above
    lines.append(line(x, y, px, py, BLACK, 1.2, ' stroke-dasharray="4 3"'))
    lines += arc(x, y, 92, 0, 26, BLUE) + arc(x, y, 70, 90, 35, GREEN) + arc(x, y, 92, 0, -26, ORANGE)
    lines += [text(x + 28, y - 97, "+", 16, "middle", BLUE, "bold"), text(x - 26, y - 97, "+", 16, "middle", ORANGE, "bold"),
              text(x + 72, y - 42, "+", 16, "middle", GREEN, "bold")]
    lines += head(x, y)
    lines += [circle(px, py, 8, BLACK), text(px + 14, py - 4, "source", 12, weight="bold")]

    x = 568
    lines += [text(x, 86, "from the right", 13, "middle", GREY, "bold"), circle(x, y, radius, stroke=LIGHT)]
    lines += arrow(x - 150, y, x + 158, y, BLACK) + arrow(x, y + 150, x, y - 168, BLACK)
    lines += [text(x + 158, y - 8, "y", 15, weight="bold"), text(x + 152, y + 18, "front", 11, colour=GREY),
              text(x + 10, y - 160, "z", 15, weight="bold"), text(x + 24, y - 160, "up", 11, colour=GREY)]
    for elevation, words, dx, dy, anchor in ((90, "90°", -6, -2, "end"), (-90, "−90°", 6, 12, "start"), (45, "45°", 0, 4, "start"),
                                             (-45, "−45°", 0, 4, "start")):
        px, py = turned(x, y, 90 - elevation, radius + 10)
        lines.append(text(px + dx, py + dy, words, 12, anchor, BLUE))
    px, py = turned(x, y, 70, radius)
    lines.append(line(x, y, px, py, BLACK, 1.2, ' stroke-dasharray="4 3"'))
    lines += arc(x, y, 92, 90, 74, BLUE)
    lines += [text(x + 100, y - 10, "+", 16, "start", BLUE, "bold"), circle(px, py, 8, BLACK),
              text(px + 14, py, "20° up", 12, weight="bold"), circle(x, y, 13, "#ffffff", GREY, ' stroke-width="1.5"'),
              polygon([(x + 12, y - 5), (x + 19, y), (x + 12, y + 5)], GREY), circle(x - 1, y, 3.4, GREY)]

    rows = ((BLACK, "xyz 0.94 1.63 0.68", "metres: right, front, up"),
            (BLUE, "aed 30 20 2", "azimuth clockwise from the front, elevation upwards, distance; ade: distance before elevation"),
            (ORANGE, "quilo3 -30 2 20", "azimuth positive to the left, as in wfs, in ADM-OSC (/adm/obj/N/aed) and in ITU-R BS.2051"),
            (GREEN, "cos φ, sin φ with φ = 60°", "the angle of the harmonics: from x, counter-clockwise; a source in front is in Y"))
    for k, (colour, words, about) in enumerate(rows):
        top = 462 + 24 * k
        lines += [circle(31, top - 4, 5, colour), text(46, top, words, 13, colour=colour, weight="bold"),
                  text(240, top, about, 12, colour=GREY)]
    return page(830, 556, "Axes, angles and signs", lines)


# Loudspeakers by (azimuth, elevation) round the listener, or (x, y) in parts of the room.
RING = [(-30, 0), (30, 0), (0, 0), (-110, 0), (110, 0)]
DOME = [(a - 157.5, 0) for a in range(0, 360, 45)] + [(a - 135, 40) for a in range(0, 360, 90)] + [(0, 90)]
ROOMS = {
    # name: loudspeakers round, loudspeakers anywhere, the area served (half width, half depth), sources
    "pair": ([(-30, 0), (30, 0)], [], (18, 24), [(10, 0.8)]),
    "ring": (RING, [], (26, 26), [(70, 1.0)]),
    "dome": (DOME, [], (26, 26), [(200, 0.7)]),
    "hall": ([], [(-0.9, 0.8), (-0.2, 0.9), (0.6, 0.85), (0.92, 0.2), (0.8, -0.8), (-0.1, -0.7), (-0.9, -0.3), (0.2, 0.1)],
             (84, 62), [(-40, 0.5)]),
    "both": (DOME[:8], [], (52, 52), [(50, 0.3), (50, 1.35)]),
    "field": ([(a, 0) for a in range(0, 360, 45)], [], (34, 34), [(30, 1.0)]),
    "bass": ([(-45, 0), (45, 0), (135, 0), (-135, 0)], [], (84, 62), [(80, 0.9)]),
    "ears": ([], [], (0, 0), [(50, 0.9), (-100, 0.6)]),
}


def room(name):
    around, anywhere, area, sources = ROOMS[name]
    x, y, radius = 110, 90, 62
    lines = [f'<rect x="6" y="6" width="208" height="168" rx="8" fill="#f6f8fa" stroke="{LIGHT}"/>']
    if area[0]:
        lines.append(f'<ellipse cx="{x}" cy="{y}" rx="{area[0]}" ry="{area[1]}" fill="#d6e9f5"/>')
    if around:
        lines.append(circle(x, y, radius, stroke=FAINT))
    places = [(*turned(x, y, azimuth, radius * math.cos(math.radians(elevation))), elevation) for azimuth, elevation in around]
    places += [(x + 95 * px, y - 75 * py, 0) for px, py in anywhere]
    lines += head(x, y, 10)
    if name == "ears":
        lines += [f'<path d="M {x - 12} {y} A 12 12 0 0 1 {x + 12} {y}" stroke="{BLACK}" stroke-width="3"/>',
                  f'<rect x="{x - 16}" y="{y - 5}" width="7" height="12" rx="2" fill="{BLACK}"/>',
                  f'<rect x="{x + 9}" y="{y - 5}" width="7" height="12" rx="2" fill="{BLACK}"/>']
    for px, py, elevation in places:
        colour = BLACK if elevation == 0 else "#7d8a97"
        azimuth = math.degrees(math.atan2(px - x, y - py))
        corners = [turned(px, py, azimuth + a, 8.5) for a in (40, 140, 220, 320)]
        lines.append(polygon(corners, colour))
    lines += [circle(*turned(x, y, azimuth, radius * part), 6.5, ORANGE) for azimuth, part in sources]
    return page(220, 180, f"A room: {name}", lines)


# Steps of a message and of a block of audio: number, what happens, where.
MESSAGE = (
    ("source 2 aed 30 0 2", "Max looks the name up in the table of messages", "src/QuiloPanMessages.cpp"),
    ("PromptHandler, Door", "one at a time; catches everything", "src/max"),
    ("SourceMessage", "index, property, format, values; or one clear line", "src/QuiloPanSource.cpp"),
    ("Coordinates::Apply", "format and values become x, y, z", "libvelkdsp/src/math"),
    ("Pan::SetSourcePosition", "stores the place, under the engine's lock", "libquilo/src/pan/QuiloPan.cpp"),
    ("ComputeGains, a law", "a place becomes a row of gains", "libquilo/src/laws"),
    ("SignalMatrix::SetRow", "atomics under a sequence number", "libvelkdsp/src/processors"),
)
BLOCK = (
    ("quilo_pan_perform64", "Max brings vectors of doubles", "src/quilo.pan~.cpp"),
    ("ProcessHost", "OSC that waits, mute, bypass", "libvelkdsp/src/processors"),
    ("Process", "active inlets become finite floats", "libvelkdsp/src/processors"),
    ("SignalMatrix", "at a segment's end takes new rows; gains glide", "libvelkdsp/src/processors"),
    ("kernels", "inputs times gains: scalar, AVX2, AVX-512", "libvelkdsp/src/kernels"),
    ("HostDrain", "finite doubles, every outlet", "libvelkdsp/src/processors"),
)


def walk():
    width, height, step, top = 350, 52, 68, 92
    columns = ((24, 0, MESSAGE, BLUE, "a message: main thread or scheduler"),
               (446, len(MESSAGE) - 4, BLOCK, GREEN, "a block of audio: audio thread"))
    lines = headline("How a message becomes sound", "each box: what is called, what happens, where it stands", 24)
    for x, first, boxes, colour, title in columns:
        y = top + first * step
        lines.append(text(x, y - 12, title, 13, colour=colour, weight="bold"))
        for k, (name, about, where) in enumerate(boxes):
            lines += [f'<rect x="{x}" y="{y}" width="{width}" height="{height}" rx="6" fill="#f6f8fa" stroke="{colour}"/>',
                      text(x + 12, y + 19, name, 13, weight="bold"), text(x + width - 12, y + 19, where, 10, "end", GREY),
                      text(x + 12, y + 39, about, 12)]
            if k + 1 < len(boxes):
                lines += arrow(x + 24, y + height, x + 24, y + step - 10, colour)
            y += step
    y = top + (len(MESSAGE) - 1) * step + height / 2
    lines += arrow(24 + width, y, 446 - 10, y, ORANGE, 2.5)
    lines += [text(24, y + 62, "Orange: the hand-over, without a lock or waiting.", 13, colour=ORANGE, weight="bold"),
              text(24, y + 82, "A row starts to glide within one interpolation time", 12, colour=GREY),
              text(24, y + 98, "and has arrived within two.", 12, colour=GREY)]
    return page(820, top + (len(MESSAGE) + 2) * step + 6, "How a message becomes sound", lines)


if __name__ == "__main__":
    docs = drawing_options(__doc__).docs
    write(docs / "guide/coordinates.svg", coordinates())
    write(docs / "guide/walk.svg", walk())
    for name in ROOMS:
        write(docs / f"guide/room-{name}.svg", room(name))
