#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Shows tools/package/check_patcher.py a sound patcher, and the same one with one mistake at a time.

    check_patcher_test.py HOST
"""
import copy
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools" / "package"))
from check_patcher import check  # noqa: E402
from facts import Host  # noqa: E402
from patcher import Patcher, file_text, tabbed  # noqa: E402

HOST = sys.argv.pop(1)


def sound_patcher():
    tab = Patcher()
    noise = tab.add("newobj", 20, 10, text="noise~")
    message = tab.add("message", 120, 10, text="source 1 azim $1")
    attribute = tab.add("attrui", 300, 10, attr="interpolationtime")
    panner = tab.add("newobj", 20, 60, text="quilo.pan~ 2 2 xy", size=(200, 22), inlets=2, outlets=["signal", "signal", ""])
    meter = tab.add("meter~", 20, 100)
    for source in (noise, message, attribute):
        tab.connect(source, 0, panner, 0)
    tab.connect(panner, 0, meter, 0)
    tab.connect(panner, 0, tab.add("ezdac~", 20, 130), 0)
    return tabbed([("tab", tab)])


def box(patcher, k):
    return patcher["boxes"][0]["box"]["patcher"]["boxes"][k]["box"]


def cord(patcher, k):
    return patcher["boxes"][0]["box"]["patcher"]["lines"][k]["patchline"]


MISTAKES = (
    (lambda p: None, None),
    (lambda p: box(p, 1).update(text="source 9 azim $1"), "invalid source index 9"),
    (lambda p: box(p, 1).update(text="sources 1"), "doesn't understand"),
    (lambda p: box(p, 2).update(attr="cutoff"), "no attribute cutoff answers"),
    (lambda p: box(p, 3).update(text="quilo.pan~ 3 2 xy"), "has 3 inlets and 3 outlets"),
    (lambda p: box(p, 3).update(text="quilo.pan~ 2 5 xy"), "Unsupported panning configuration"),
    (lambda p: box(p, 1).update(id="obj-1"), "two boxes are obj-1"),
    (lambda p: box(p, 1).update(patching_rect=[60.0, 20.0, 80.0, 22.0]), "lies over"),
    (lambda p: box(p, 0).update(patching_rect=[2000.0, 20.0, 80.0, 22.0]), "outside of the window"),
    (lambda p: box(p, 0).update(text="noize~"), "is an object that is not known here"),
    (lambda p: box(p, 1).update(patching_rect=[120.0, 10.0, 80.0, 22.0]), "too narrow for its text"),
    (lambda p: box(p, 0).update(outlettype=[]), "the types of its outlets"),
    (lambda p: cord(p, 0).update(destination=["obj-4", 2]), "has no outlet or no inlet"),
    (lambda p: cord(p, 0).update(destination=["obj-2", 0]), "where none is taken"),
    (lambda p: cord(p, 1).update(destination=["obj-4", 1]), "to an inlet of signals"),
    (lambda p: cord(p, 0).update(source=["obj-4", 0]), "is given no sound"),
    (lambda p: cord(p, 4).update(destination=["obj-5", 0]), "or none is heard"),
    (lambda p: box(p, 5).update(maxclass="button", numinlets=1, numoutlets=1, outlettype=["bang"]), "nothing switches audio on"),
    (lambda p: cord(p, 0).update(source=["obj-77", 0]), "not both there"),
    (lambda p: p["boxes"][0]["box"]["patcher"].update(showontab=0), "is no tab"),
    (lambda p: box(p, 1).update(hint="/home/someone/file.wav"), "path of some machine"),
    (lambda p: p.pop("rect"), "has no rect"),
)


class Mistakes(unittest.TestCase):
    def test_each_is_named(self):
        host = Host(HOST)
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "quilo.maxhelp"
            for k, (spoil, said) in enumerate(MISTAKES):
                with self.subTest(mistake=k, said=said):
                    patcher = copy.deepcopy(sound_patcher())
                    spoil(patcher)
                    path.write_text(file_text(patcher), encoding="utf-8")
                    faults = check(host, [path])
                    if said is None:
                        self.assertEqual(faults, [])
                    else:
                        self.assertTrue(any(said in fault for fault in faults), f"{said!r} not in {faults}")


if __name__ == "__main__":
    unittest.main()
