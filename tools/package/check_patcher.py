#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks patcher files: well-formed, legible, tabs that sound, every box and message of the object accepted by it.

    check_patcher.py --host HOST FILE...

Prints a line per fault; status 1 when there is one. Every text of the object's boxes is made in the
host, and every message and attribute that a cord leads to it is sent there.
"""
import argparse
import json
import re
import sys
from pathlib import Path

from facts import CLASS, Host
from patcher import OBJECTS, WIDGETS

REQUIRED = ("fileversion", "appversion", "rect", "boxes", "lines")
WITH_TEXT = ("newobj", "message", "comment")
SOUNDS = ("pink~", "noise~", "cycle~")
LOUDSPEAKERS = ("dac~", "ezdac~")
FOREIGN_PLACE = re.compile(r'/Volumes|/Users/|/home/|"[A-Za-z]:[/\\]|\\\\')
SAMPLES = {"$1": "30"}
SURROUNDINGS = ("host dictionary quilo-state set interpolationtime 20",)  # what the patchers' messages refer to
GAP = 0.5  # pixels by which boxes may overlap
LETTER = 6.0  # pixels of a letter in a box, on average


class Checker:
    def __init__(self, host):
        self.host = host
        self.faults = []

    def fault(self, where, what):
        self.faults.append(f"{where}: {what}")

    def file(self, path):
        text = path.read_text(encoding="utf-8")
        if FOREIGN_PLACE.search(text):
            self.fault(path.name, "holds a path of some machine")
        whole = json.loads(text)
        if list(whole) != ["patcher"]:
            self.fault(path.name, "the top level holds more than the patcher")
        self.patcher(path.name, whole["patcher"], is_help=path.suffix == ".maxhelp")

    def patcher(self, where, patcher, is_help=False):
        for key in REQUIRED:
            if key not in patcher:
                return self.fault(where, f"has no {key}")
        boxes = {}
        for entry in patcher["boxes"]:
            box = entry["box"]
            if box["id"] in boxes:
                self.fault(where, f"two boxes are {box['id']}")
            boxes[box["id"]] = box
            self.box(f"{where} {box.get('text', box['maxclass'])!r}", box, is_help)
        self.overlaps(where, patcher["rect"], list(boxes.values()))
        cords = [line["patchline"] for line in patcher["lines"]]
        for cord in cords:
            self.cord(where, boxes, cord)
        panners = [box for box in boxes.values() if class_of(box) == CLASS]
        if patcher.get("showontab"):
            self.sound(where, boxes, cords, panners)
        for box in panners:
            self.object(f"{where} {box['text']!r}", box, self.senders(boxes, cords, box))

    def sound(self, where, boxes, cords, panners):
        """In a tab every object is given a sound and heard, and something switches audio on."""
        ways = [(cord["source"][0], cord["destination"][0]) for cord in cords if carries_signal(boxes, cord)]
        fed = reached({key for key, box in boxes.items() if class_of(box) in SOUNDS}, ways)
        heard = reached({key for key, box in boxes.items() if class_of(box) in LOUDSPEAKERS}, [way[::-1] for way in ways])
        for box in panners:
            if box["id"] not in fed or box["id"] not in heard:
                self.fault(where, f"{box['text']!r} is given no sound, or none is heard of it")
        if panners and not any(class_of(box) == "ezdac~" for box in boxes.values()):
            self.fault(where, "nothing switches audio on")

    def box(self, where, box, is_help):
        if box["maxclass"] != "newobj" and box["maxclass"] not in WIDGETS:
            self.fault(where, "is of no known class")
        if box["maxclass"] in WITH_TEXT and "text" not in box:
            self.fault(where, "has no text")
        if len(box.get("outlettype", [])) != box["numoutlets"]:
            self.fault(where, "the types of its outlets are not as many as they")
        x, y, width, height = box["patching_rect"]
        if width <= 0 or height <= 0 or x < 0 or y < 0:
            self.fault(where, "has no size or no place")
        if box["maxclass"] in ("newobj", "message") and len(box.get("text", "")) * LETTER > width:
            self.fault(where, "is too narrow for its text")
        words = box.get("text", "").split()
        if box["maxclass"] == "newobj" and words[0] == "p":
            if "patcher" not in box:
                return self.fault(where, "is empty")
            if is_help and not box["patcher"].get("showontab"):
                self.fault(where, "is no tab")
            return self.patcher(where, box["patcher"])
        if box["maxclass"] == "newobj" and words[0] != CLASS and words[0] not in OBJECTS:
            self.fault(where, "is an object that is not known here")
        return None

    def overlaps(self, where, window, boxes):
        rectangles = [(box, box["patching_rect"]) for box in boxes if box["maxclass"] != "panel"]
        for k, (box, (x, y, width, height)) in enumerate(rectangles):
            name = box.get("text", box["maxclass"])
            if x + width > window[2] or y + height > window[3]:
                self.fault(where, f"{name!r} lies outside of the window")
            for other, (u, v, wide, high) in rectangles[k + 1:]:
                if x + width > u + GAP and u + wide > x + GAP and y + height > v + GAP and v + high > y + GAP:
                    self.fault(where, f"{name!r} lies over {other.get('text', other['maxclass'])!r}")

    def cord(self, where, boxes, cord):
        (source, outlet), (target, inlet) = cord["source"], cord["destination"]
        if source not in boxes or target not in boxes:
            return self.fault(where, f"a cord leads from {source} to {target}, which are not both there")
        first, last = boxes[source], boxes[target]
        names = f"{first.get('text', first['maxclass'])!r} to {last.get('text', last['maxclass'])!r}"
        if outlet >= len(first.get("outlettype", [])) or inlet >= last["numinlets"]:
            return self.fault(where, f"the cord from {names} has no outlet or no inlet")
        takes_signals = last["maxclass"] in ("ezdac~", "meter~") or last.get("text", " ").split(" ")[0].endswith("~")
        if first["outlettype"][outlet] == "signal" and not takes_signals:
            self.fault(where, f"the cord from {names} carries a signal to where none is taken")
        if first["outlettype"][outlet] != "signal" and last.get("text", "").startswith(CLASS) and inlet != 0:
            self.fault(where, f"the cord from {names} carries messages to an inlet of signals")
        return None

    @staticmethod
    def senders(boxes, cords, target):
        return [boxes[cord["source"][0]] for cord in cords
                if cord["destination"] == [target["id"], 0] and cord["source"][0] in boxes]

    def object(self, where, box, senders):
        statements = [(sender["text"], None) for sender in senders if sender["maxclass"] == "message"]
        statements += [(f"get{sender['attr']}", sender["attr"]) for sender in senders if sender["maxclass"] == "attrui"]
        try:
            lines, complaints = self.told(box["text"], statements)
        except RuntimeError as failure:
            return self.fault(where, f"is not made: {failure}")
        inlets = sum(line.startswith("inlet ") for line in lines)
        outlets = sum(line.startswith("outlet ") for line in lines)
        if (inlets, outlets) != (box["numinlets"], box["numoutlets"]):
            self.fault(where, f"has {inlets} inlets and {outlets} outlets")
        if box["outlettype"] != ["signal"] * (outlets - 1) + [""]:
            self.fault(where, "its outlets are of other types")
        for statement in [""] + statements if complaints else []:  # which of them?
            for complaint in self.told(box["text"], [statement] if statement else [])[1]:
                self.fault(where, f"{statement and statement[0]!r}: {complaint}")
        return None

    def told(self, text, statements):
        """What an object says to statements, which are pairs of a message and the attribute that must answer it,
        if any. @return the console's lines, and those that are complaints"""
        spoken = [statement for statement, _ in statements]
        for sign, value in SAMPLES.items():
            spoken = [statement.replace(sign, value) for statement in spoken]
        lines = self.host.run(f"object {text}", "host assist", *SURROUNDINGS, *spoken)
        silent = [answer for _, answer in statements
                  if answer and not any(line.startswith(f"outlet: {answer} ") for line in lines)]
        return lines, ([line for line in lines if line.startswith(("error:", "warn:", "bug:"))] +
                       [f"no attribute {answer} answers" for answer in silent])


def class_of(box):
    return box["text"].split()[0] if box["maxclass"] == "newobj" else box["maxclass"]


def carries_signal(boxes, cord):
    key, outlet = cord["source"]
    return "signal" in boxes.get(key, {}).get("outlettype", [])[outlet:outlet + 1]


def reached(found, ways):
    """All boxes to which ways lead from those that are `found`; a way is a pair of boxes."""
    more = {end for start, end in ways if start in found} - found
    return reached(found | more, ways) if more else found


def check(host, paths):
    """The faults of patcher files, a line each."""
    checker = Checker(host)
    for path in paths:
        try:
            checker.file(path)
        except (KeyError, TypeError, ValueError) as fault:
            checker.fault(path.name, f"is no patcher: {fault!r}")
    return checker.faults


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--host", required=True)
    parser.add_argument("files", nargs="+", type=Path)
    options = parser.parse_args()
    faults = check(Host(options.host), options.files)
    print("\n".join(faults + [f"{len(options.files)} patchers, {len(faults)} faults"]))
    sys.exit(bool(faults))


if __name__ == "__main__":
    main()
