#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads the pictures of quilo-host as XML and measures them: scales, places, letters that overlap.

    tests/tools/pictures_test.py QUILO_HOST
"""
import math
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

HOST = sys.argv.pop(1)
SVG = "{http://www.w3.org/2000/svg}"
SPEAKER = "#3b4652"


def dome(count):
    """Directions all over the sphere, the same distance from their neighbours."""
    places = []
    for k in range(count):
        z = 1 - (2 * k + 1) / count
        a = math.pi * (3 - math.sqrt(5)) * k
        places.append((math.sqrt(1 - z * z) * math.sin(a), math.sqrt(1 - z * z) * math.cos(a), z))
    return places


def grid(columns, rows):
    return [(x - columns / 2, y - rows / 2, 0.25) for y in range(rows) for x in range(columns)]


QUAD = [(-1, 1, 0), (1, 1, 0), (1, -1, 0), (-1, -1, 0)]
SCENES = {
    # name            type       loudspeakers               places of sources, then where the first moves
    "quad":          ("vbap2d", QUAD,                       [(0.5, 2, 0), (-1, 0.5, 0)], (2, 0, 0)),
    "dome of 250":   ("dbap3d", dome(250),                  dome(250), (0, 1.5, 0)),
    "grid of 250":   ("dbap",   grid(25, 10),               [(3, 4, 0)], (-3, 4, 0)),
    "everything at 1e30 m": ("vbap2d", [tuple(1e30 * x for x in p) for p in QUAD], [(1e30, 0, 0)], (0, 2e30, 0)),
    "one thing at 1e30 m":  ("vbap2d", QUAD,                [(1, 0, 0), (1e30, 1e30, -1e30)], (-1e30, 0, 0)),
}


# Where there is little to draw, and a title that XML must not take for its own.
BARE = {
    "no loudspeakers": ("object quilo.pan~ 2 4 hoa3d\nsource 1 az 20\nat 0.5 source 1 az 100\n", ()),
    "no time": ("object quilo.pan~ 1 4 vbap2d\n", ("--duration", "0")),
    "all at the listener": ("object quilo.pan~ 2 3 dbap\nspeakers xy 0 0 0 0 0 0\nsource 1 xyz 0 0 0\n", ()),
    "tiny": ("object quilo.pan~ 1 2 dbap\nspeakers xy 1e-5 0 -1e-5 0\nsource 1 xyz 0 1e-5 0\n", ("--duration", "1e-4")),
    "silent": ('object quilo.pan~ 1 1 "<\u00e4&\'>"\n', ()),
}


def draw(script, *options):
    with tempfile.TemporaryDirectory() as folder:
        file = Path(folder) / "p.svg"
        subprocess.run([HOST, "--quiet", "--picture", str(file), *options, "-"], input=script.encode(), check=True,
                       stdout=subprocess.DEVNULL)
        return xml.parse(file).getroot()


class Picture:
    def __init__(self, kind, speakers, sources, then):
        script = f"object quilo.pan~ {len(sources)} {len(speakers)} {kind}\nspeakers xyz"
        script += "".join(f" {x:.9g} {y:.9g} {z:.9g}" for x, y, z in speakers) + "\n"
        script += "".join(f"source {k} xyz {x:.9g} {y:.9g} {z:.9g}\n" for k, (x, y, z) in enumerate(sources, 1))
        script += "at 0.5 source 1 xyz %.9g %.9g %.9g\n" % then
        self.root = draw(script)
        self.plan = next(g for g in self.root.iter(SVG + "g") if g.get("id") == "from-above")
        self.frame = self.box(next(self.plan.iter(SVG + "rect")))

    @staticmethod
    def box(rect):
        x, y, width, height = (float(rect.get(key)) for key in ("x", "y", "width", "height"))
        return x, y, x + width, y + height

    def texts(self):
        """(text, size, x of the anchor, y of the middle, anchor), the white rims left out."""
        for text in self.plan.iter(SVG + "text"):
            if text.get("fill") == "white" and text.get("stroke"):
                continue
            size = float(text.get("font-size"))
            yield (text.text, size, float(text.get("x")), float(text.get("y")) - 0.35 * size, text.get("text-anchor"))

    def inside(self, x, y):
        left, top, right, bottom = self.frame
        return left <= x <= right and top <= y <= bottom

    def scale(self, below):
        """Metres and pixels of the numbers below the frame, or of those at its left."""
        left, top, right, bottom = self.frame
        found = []
        for text, _, x, y, _ in self.texts():
            try:
                number = float(text.replace("\u2212", "-"))
            except ValueError:
                continue
            if y > bottom if below else x < left:
                found.append((number, x if below else y))
        return found

    def speakers(self):
        for shape in self.plan.iter(SVG + "polygon"):
            if shape.get("fill") == SPEAKER:
                points = [tuple(map(float, p.split(","))) for p in shape.get("points").split()]
                # The box is its own mirror image about the line from mouth to back.
                yield tuple(sum(p[k] for p in (points[1], points[4])) / 2 for k in (0, 1))


class Pictures(unittest.TestCase):
    def each(self):
        for name, scene in SCENES.items():
            with self.subTest(name):
                yield Picture(*scene), scene

    def test_every_number_is_one_and_on_the_sheet(self):
        roots = [picture.root for picture, _ in self.each()] + [draw(script, *more) for script, more in BARE.values()]
        for root in roots:
            width, height = (float(root.get(key)) for key in ("width", "height"))
            for shape in root.iter():
                for key, most in (("x", width), ("cx", width), ("x1", width), ("y", height), ("cy", height)):
                    if shape.get(key) is not None:
                        self.assertTrue(-1 <= float(shape.get(key)) <= most + 1, (shape.tag, shape.attrib))
                for point in (shape.get("points") or "").split():
                    x, y = map(float, point.split(","))
                    self.assertTrue(-1 <= x <= width + 1 and -1 <= y <= height + 1, point)

    def test_the_title_is_the_box_text(self):
        titles = [draw(script, *more).find(SVG + "title").text for script, more in BARE.values()]
        self.assertEqual(titles, [script.split("\n")[0][len("object "):].replace('"', "") for script, _ in BARE.values()])

    def test_loudspeakers_stand_where_the_scale_has_them(self):
        for picture, (_, speakers, _, _) in self.each():
            (x0, px0), *_, (x1, px1) = picture.scale(True)
            (y0, py0), *_, (y1, py1) = picture.scale(False)
            pixels = (px1 - px0) / (x1 - x0)
            self.assertAlmostEqual(pixels / ((py1 - py0) / (y1 - y0)), -1, 3)
            drawn = list(picture.speakers())
            self.assertEqual(len(drawn), len(speakers))
            for (x, y), place in zip(drawn, speakers):
                self.assertAlmostEqual(x, px0 + (place[0] - x0) * pixels, delta=0.6)
                self.assertAlmostEqual(y, py0 - (place[1] - y0) * pixels, delta=0.6)

    def test_labels_do_not_cover_each_other(self):
        for picture, (_, speakers, _, _) in self.each():
            boxes = []
            for text, size, x, y, anchor in picture.texts():
                if anchor == "middle" and picture.inside(x, y):
                    half = 0.29 * size * len(text)  # narrower than the letters are taken to be
                    boxes.append((x - half, y - size / 2, x + half, y + size / 2, text))
            self.assertGreaterEqual(len(boxes), min(len(speakers), 4))
            for k, a in enumerate(boxes):
                self.assertTrue(picture.inside(a[0], a[1]) and picture.inside(a[2], a[3]), a)
                for b in boxes[:k]:
                    self.assertFalse(a[0] < b[2] and b[0] < a[2] and a[1] < b[3] and b[1] < a[3], (a, b))

    def test_numbers_below_a_scale_have_room(self):
        for picture, _ in self.each():
            below = sorted((x, len(text) * 0.6 * size) for text, size, x, y, anchor in picture.texts()
                           if anchor == "middle" and picture.frame[3] < y < picture.frame[3] + 20)
            self.assertGreater(len(below), 2)
            for (x, width), (next_x, next_width) in zip(below, below[1:]):
                self.assertLess(x + width / 2, next_x - next_width / 2)


if __name__ == "__main__":
    unittest.main()
