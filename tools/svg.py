# SPDX-License-Identifier: MIT
"""What the pictures of the documentation share: colours, words, pages, and fields with two axes.

Every page has a white ground of its own, so it reads on dark pages as on light ones.
"""
import argparse
from pathlib import Path

BLACK, GREY, LIGHT, FAINT = "#1f2933", "#66727f", "#c3ccd5", "#e4e9ee"
BLUE, GREEN, ORANGE = "#0072b2", "#009e73", "#d55e00"
COLOURS = (ORANGE, BLUE, GREEN, "#cc79a7", "#e69f00", "#56b4e9", "#333333",
           "#8c564b", "#7f7f00", "#6a3d9a", "#b15928", "#1b6b93")  # of the outlets
WIDTH, LEFT, RIGHT, PANEL = 760, 64, 40, 210  # of pages with panels: the page, its margins, the height of a panel


def text(x, y, words, size=12, anchor="start", colour=BLACK, weight="normal"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" fill="{colour}" '
            f'stroke="none" font-weight="{weight}">{words}</text>')


def page(width, height, title, lines, style=""):
    """A whole picture: shapes are lines unless they say otherwise; `style` holds more attributes for all."""
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}" '
        f'font-family="Helvetica, Arial, \'DejaVu Sans\', sans-serif" fill="none"{style}>',
        f"<title>{title}</title>", '<rect width="100%" height="100%" fill="#ffffff"/>', *lines]) + "\n</svg>\n"


def headline(title, subtitle, x=LEFT, baselines=(30, 52)):
    return [text(x, baselines[0], title, 16, weight="bold"), text(x, baselines[1], subtitle, 12, colour=GREY)]


class Panel:
    """Curves over a horizontal axis whose places run from 0 to 1; `ticks` are (place, words).

    @param rules whether a thin line stands over each tick
    @param numbers whether the values of the vertical axis are written
    """

    def __init__(self, top, title, low, high, step, ticks, rules=False, numbers=True):
        self.top, self.low, self.high = top, low, high
        self.bottom = top + PANEL
        self.lines = [text(LEFT, top - 10, title, 13, weight="bold")]
        for k in range(round((high - low) / step) + 1):
            value = low + k * step
            y = self._y(value)
            self.lines.append(f'<line x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y:.1f}" y2="{y:.1f}" stroke="{FAINT}"/>')
            if numbers:
                self.lines.append(text(LEFT - 8, y + 4, f"{round(value, 9):g}", 11, "end", GREY))
        for place, words in ticks:
            x = self._x(place)
            if rules:
                self.lines.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{top}" y2="{self.bottom}" stroke="{FAINT}"/>')
            self.lines.append(text(x, self.bottom + 18, words, 11, "middle", GREY))

    def _x(self, place):
        return LEFT + place * (WIDTH - LEFT - RIGHT)

    def _y(self, value):
        return self.top + (self.high - min(max(value, self.low), self.high)) / (self.high - self.low) * PANEL

    def line(self, places, values, colour, dash=""):
        spots = " ".join(f"{self._x(p):.1f},{self._y(v):.1f}" for p, v in zip(places, values))
        dashes = f' stroke-dasharray="{dash}"' if dash else ""
        self.lines.append(f'<polyline points="{spots}" stroke="{colour}" stroke-width="1.8"{dashes}/>')

    def dots(self, places, values, colour):
        self.lines += [f'<circle cx="{self._x(p):.1f}" cy="{self._y(v):.1f}" r="2.6" stroke="{colour}"/>'
                       for p, v in zip(places, values)]

    def legend(self, entries, step=80):
        """Coloured words at the right, above the panel: (words, colour) from left to right."""
        self.lines += [text(WIDTH - RIGHT - step * (len(entries) - 1 - k), self.top - 10, words, 12, "end", colour, "bold")
                       for k, (words, colour) in enumerate(entries)]


def drawing_options(description):
    """The arguments of every drawing tool: the host that plays, and the folder of the documentation."""
    home = Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--host", type=Path, default=home / "build/release/bin/quilo-host")
    parser.add_argument("--docs", type=Path, default=home / "docs")
    return parser.parse_args()


def write(file, content):
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(content, encoding="utf-8")
