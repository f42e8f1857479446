# SPDX-License-Identifier: MIT
"""Builds patchers: boxes, cords and tabs, as the JSON of .maxhelp and .maxpat files."""
import json

# Objects by the first word of their text: numbers of inlets, types of the outlets.
OBJECTS = {
    "noise~": (1, ["signal"]), "pink~": (1, ["signal"]), "cycle~": (2, ["signal"]), "*~": (2, ["signal"]),
    "+~": (2, ["signal"]), "-~": (2, ["signal"]), "pcontrol": (1, [""]),
    "dac~": (None, []), "route": (2, ["", ""]), "gate~": (2, None), "metro": (2, ["bang"]), "loadbang": (1, ["bang"]),
    "counter": (5, ["int", "", "", "int"]), "print": (1, []), "prepend": (1, [""]), "udpreceive": (1, [""]),
    "udpsend": (1, []), "pattr": (1, ["", "", ""]), "autopattr": (1, ["", "", "", ""]),
    "pattrstorage": (1, [""]), "dict": (2, ["dictionary", "", "", ""]),
}
# Boxes of the user interface: inlets, outlets, size.
WIDGETS = {
    "message": (2, [""], None), "comment": (1, [], None), "toggle": (1, ["int"], (24, 24)),
    "button": (1, ["bang"], (24, 24)), "number": (1, ["", "bang"], (60, 22)), "flonum": (1, ["", "bang"], (60, 22)),
    "attrui": (1, [""], (220, 22)), "ezdac~": (2, [], (45, 45)), "meter~": (1, ["float"], (60, 12)),
    "preset": (1, ["preset", "int", "preset", "int"], (100, 40)), "dict.view": (1, [], (300, 120)),
    "textbutton": (1, ["", "", "int"], (20, 20)),
    "fpic": (1, ["jit_matrix"], (400, 200)), "panel": (1, [], None),
}
MARGIN = 15.0


def text_width(text, size=12.0):
    """Room for a text in Arial, in pixels, generously."""
    return max(30.0, round(len(text) * size * 0.56 + 14.0))


class Box:
    def __init__(self, identifier, rectangle, inlets, outlets):
        self.identifier, self.rectangle, self.inlets, self.outlets = identifier, rectangle, inlets, outlets

    @property
    def right(self):
        return self.rectangle[0] + self.rectangle[2]

    @property
    def bottom(self):
        return self.rectangle[1] + self.rectangle[3]

    def port(self, number, count):
        """Where the middle of an inlet or outlet lies, from left to right."""
        x, _, width, _ = self.rectangle
        return x + 9.5 if count < 2 else x + 9.5 + number * (width - 19.0) / (count - 1)


class Patcher:
    """A patcher under construction. Sizes and places are in pixels from the top left."""

    def __init__(self):
        self.boxes, self.lines = [], []
        self.width = self.height = 0.0

    def add(self, maxclass, x, y, text=None, size=None, inlets=None, outlets=None, **keys):
        if maxclass == "newobj":
            shape = OBJECTS.get(text.split()[0], (inlets, outlets))
            inlets = inlets if inlets is not None else shape[0]
            outlets = outlets if outlets is not None else shape[1]
        else:
            inlets, outlets, usual = WIDGETS[maxclass]
            size = size or usual
        if size is None:
            wide = max(inlets or 0, len(outlets)) * 16.0
            size = (max(wide, text_width(text, keys.get("fontsize", 12.0))), 22.0)
        box = {"id": f"obj-{len(self.boxes) + 1}", "maxclass": maxclass, "numinlets": inlets,
               "numoutlets": len(outlets), "patching_rect": [float(x), float(y), float(size[0]), float(size[1])]}
        if outlets:
            box["outlettype"] = list(outlets)
        if text is not None:
            box["text"] = text
        box.update(keys)
        self.boxes.append({"box": box})
        made = Box(box["id"], box["patching_rect"], inlets, outlets)
        self.width, self.height = max(self.width, made.right), max(self.height, made.bottom)
        return made

    def connect(self, source, outlet, target, inlet, bus=None, hidden=False):
        """A cord; with `bus` it runs down at that x and comes to its target from above. A hidden one shows
        in an unlocked patcher only."""
        line = {"source": [source.identifier, outlet], "destination": [target.identifier, inlet]}
        if hidden:
            line["hidden"] = 1
        if bus is not None:
            start = source.port(outlet, len(source.outlets))
            end = target.port(inlet, target.inlets)
            above = target.rectangle[1] - 8.0
            line["midpoints"] = [start, source.bottom + 2.0, bus, source.bottom + 2.0, bus, above, end, above]
        self.lines.append({"patchline": line})

    def content(self, **keys):
        """The inner part of {"patcher": ...}."""
        size = [self.width + MARGIN, self.height + MARGIN]
        return {
            "fileversion": 1,
            "appversion": {"major": 8, "minor": 0, "revision": 0, "architecture": "x64", "modernui": 1},
            "classnamespace": "box", "rect": [60.0, 90.0] + size, "bglocked": 0, "openinpresentation": 0,
            "default_fontsize": 12.0, "default_fontface": 0, "default_fontname": "Arial", "gridonopen": 1,
            "gridsize": [15.0, 15.0], "gridsnaponopen": 1, "objectsnaponopen": 1, "statusbarvisible": 2,
            "toolbarvisible": 1, **keys, "boxes": self.boxes, "lines": self.lines,
        }


def file_text(content):
    """The text of a patcher file."""
    return json.dumps({"patcher": {**content, "dependency_cache": [], "autosave": 0}}, indent=1) + "\n"


def tabbed(tabs):
    """The content of a patcher whose tabs are (name, Patcher) pairs; all are as large as the largest."""
    root = Patcher()
    x = MARGIN
    width = max(tab.width for _, tab in tabs)
    height = max(tab.height for _, tab in tabs)
    for name, tab in tabs:
        tab.width, tab.height = width, height
        box = root.add("newobj", x, 60.0, text=f"p {name}", inlets=0, outlets=[],
                       patcher=tab.content(showontab=1),
                       saved_object_attributes={"description": "", "digest": "", "globalpatchername": "", "tags": ""})
        x = box.right + 10.0
    root.width, root.height = max(width, x), height + 26.0
    return root.content(showontab=0, showrootpatcherontab=0)
