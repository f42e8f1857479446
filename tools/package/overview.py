# SPDX-License-Identifier: MIT
"""Lays out the patcher of the Extras menu: every type with a word about it, and the way to the help."""
from help import comment
from patcher import Patcher

LEFT, MIDDLE, TEXT = 20.0, 600.0, 300.0
ROW = 27.0

# Left column and right column: headings, then (type, what it is).
COLUMNS = (
    (("Two channels", (
        ("xy", "a coincident pair of microphones"), ("ms", "a mid/side pair"),
        ("ab", "a spaced pair: levels and delays"))),
     ("Headphones", (
         ("binaural", "two ears, from a measured head"), ("binaural early", "their delays alone"),
         ("binaural continuous", "with filters that follow every move"),
         ("binaural nearfield", "within arm's reach"), ("binaural snowman", "a head and a torso by their sizes"),
         ("binaural sphericalheadmodel", "a sphere for a head"),
         ("binaural diffuse", "from all sides at once"))),
     ("Ambisonic components", (
         ("bformat", "first order, 3 or 4 outlets"), ("hoa2d", "any order, on the horizon"),
         ("hoa3d", "any order, with height"), ("nfchoa2d", "the same with near sources"),
         ("nfchoa3d", "the same with near sources")))),
    (("Loudspeakers round the listener", (
        ("angular", "sine and cosine between neighbours"), ("surround", "3 or 4 outlets, matrixed"),
        ("panr", "a square of corners, 4 to 8 or 12 outlets"), ("vbap2d", "vector base, amplitudes"),
        ("vbip2d", "vector base, intensities"))),
     ("Loudspeakers on a sphere or a dome", (
         ("vbap", "vector base, amplitudes"), ("vbip", "vector base, intensities"),
         ("spcap", "a cardioid for each source"))),
     ("Loudspeakers anywhere in a room", (
         ("dbap", "by distance, on the horizon"), ("dbap3d", "by distance, with height"),
         ("vdbap", "by distance inside, vector base outside"), ("knn", "the nearest ones"))),
     ("Bass", (("subwoofers", "low-passed, then as vbap2d"),))),
)
# These make the plain type.
OTHER_NAMES = {"binaural sh"}


def overview(facts, class_name, picture):
    """The content of the patcher. @raise ValueError when a type of the object has no place in it"""
    shown = {name for column in COLUMNS for _, types in column for name, _ in types}
    if shown != set(facts.boxes) - OTHER_NAMES:
        raise ValueError(f"the overview shows other types: {shown ^ (set(facts.boxes) - OTHER_NAMES)}")
    patcher = Patcher()
    title = comment(patcher, LEFT, 14.0, f"{class_name} {facts.version}", 400.0, 20.0)
    about = comment(patcher, LEFT, title.bottom + 6.0, facts.digest + ".", 460.0)
    helper = patcher.add("message", LEFT, about.bottom + 8.0, text=f"help {class_name}")
    comment(patcher, helper.right + 6.0, helper.rectangle[1] + 1.0, "opens the help, with sound", 300.0)
    opener = patcher.add("newobj", LEFT, helper.bottom + 8.0, text="pcontrol")
    patcher.connect(helper, 0, opener, 0)
    patcher.add("fpic", MIDDLE, 14.0, pic=picture, size=(112.0, 112.0), autofit=1)
    for x, column in zip((LEFT, MIDDLE), COLUMNS):
        y = opener.bottom + 24.0
        for heading, types in column:
            y = comment(patcher, x, y, heading, 400.0, 14.0).bottom + 6.0
            for name, words in types:
                inlets, outlets = (int(n) for n in facts.boxes[name].split()[1:3])
                patcher.add("newobj", x, y, text=facts.boxes[name], size=(TEXT - 10.0, 22.0), inlets=inlets,
                            outlets=["signal"] * outlets + [""])
                comment(patcher, x + TEXT, y + 1.0, words, 300.0)
                y += ROW
            y += 12.0
    return patcher.content()
