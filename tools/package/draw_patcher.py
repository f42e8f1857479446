#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws a patcher file, each tab as one SVG, from its JSON and the pictures of its package.

    draw_patcher.py FILE.maxhelp FOLDER
"""
import base64
import json
import sys
import textwrap
from pathlib import Path
from xml.sax.saxutils import escape

FILLS = {"message": "#e2e2e2", "newobj": "#ffffff", "attrui": "#dfe9f5", "toggle": "#f4f4f4", "ezdac~": "#cfe3cf",
         "meter~": "#dcecd4", "panel": "#f2f2f2", "preset": "#efefef", "textbutton": "#f2c14e"}


def port(box, number, count):
    x, _, width, _ = box["patching_rect"]
    return x + 9.5 if count < 2 else x + 9.5 + number * (width - 19.0) / (count - 1)


def cord(boxes, line):
    (source, outlet), (target, inlet) = line["source"], line["destination"]
    first, last = boxes[source], boxes[target]
    points = [port(first, outlet, first["numoutlets"]), first["patching_rect"][1] + first["patching_rect"][3]]
    points += line.get("midpoints", []) + [port(last, inlet, last["numinlets"]), last["patching_rect"][1]]
    path = " ".join(f"{x:.1f},{y:.1f}" for x, y in zip(points[::2], points[1::2]))
    signal = first["outlettype"][outlet] == "signal"
    return f'<polyline points="{path}" fill="none" stroke="{"#b8a000" if signal else "#777"}" stroke-width="{1.6 if signal else 0.8}"/>'


def drawn_picture(box, media):
    x, y, width, height = box["patching_rect"]
    data = base64.b64encode((media / box["pic"]).read_bytes()).decode()
    return f'<image x="{x}" y="{y}" width="{width}" height="{height}" href="data:image/png;base64,{data}"/>'


def drawn_box(box, media):
    if box["maxclass"] == "fpic":
        return drawn_picture(box, media)
    x, y, width, height = box["patching_rect"]
    size = box.get("fontsize", 12.0)
    text = box.get("text") or box.get("attr") or {"ezdac~": "audio", "toggle": "x"}.get(box["maxclass"], "")
    parts = []
    if box["maxclass"] != "comment":
        fill = FILLS.get(box["maxclass"], "#ffffff")
        parts.append(f'<rect x="{x}" y="{y}" width="{width}" height="{height}" rx="{box.get("rounded", 6.0) / 2}" fill="{fill}" stroke="#555"/>')
    rows = textwrap.wrap(text, max(4, int(width / (size * 0.52)))) if box["maxclass"] == "comment" else [text]
    for k, row in enumerate(rows):
        parts.append(f'<text x="{x + 5}" y="{y + size + 3 + k * size * 1.35:.1f}" font-family="Arial, Liberation Sans" '
                     f'font-size="{size}">{escape(row)}</text>')
    return "".join(parts)


def drawing(patcher, media):
    boxes = {entry["box"]["id"]: entry["box"] for entry in patcher["boxes"]}
    width = patcher["rect"][2]
    height = max(box["patching_rect"][1] + box["patching_rect"][3] for box in boxes.values()) + 15.0
    lines = [line["patchline"] for line in patcher["lines"] if not line["patchline"].get("hidden")]
    body = [cord(boxes, line) for line in lines] + [drawn_box(box, media) for box in boxes.values()]
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}">'
            '<rect width="100%" height="100%" fill="#fafafa"/>' + "\n".join(body) + "</svg>\n")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    source, folder = Path(sys.argv[1]), Path(sys.argv[2])
    root = json.loads(source.read_text(encoding="utf-8"))["patcher"]
    tabs = [(box["text"].removeprefix("p "), box["patcher"]) for box in (e["box"] for e in root["boxes"])
            if "patcher" in box] or [(source.stem, root)]
    folder.mkdir(parents=True, exist_ok=True)
    for name, patcher in tabs:
        if patcher["boxes"]:
            (folder / f"{name}.svg").write_text(drawing(patcher, source.parent.parent / "media"), encoding="utf-8")


if __name__ == "__main__":
    main()
