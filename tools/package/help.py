# SPDX-License-Identifier: MIT
"""Lays out the help patcher: a tab per topic, each with objects that sound and what can be sent to them.

The tables below say what is shown where; texts come from the facts of the module. An attribute or a
message that no tab shows, or a tab shows and the module has not, is an error.
"""
import re
from dataclasses import dataclass

from patcher import Patcher, tabbed, text_width

WIDTH = 900.0
LEFT, RIGHT = 30.0, 560.0  # messages, attributes
ROW = 26.0
ROUND = "source 1 azim $1"

# Called by other objects, with values that nobody types.
NOT_FOR_CLICKING = {"recallpreset": "the preset object", "FullPacket": "udpreceive"}


@dataclass
class Station:
    """An object with sound at its inlets, meters at its outlets, and what is sent to it."""
    box: str  # what follows the name of the class
    about: str
    messages: tuple = ()  # "STATEMENT", or "STATEMENT | what it does"; the module's own words otherwise
    attributes: tuple = ()
    sources: tuple = ("pink~",)
    motion: str = ""  # a message with $1, which runs from 0 to 359
    extra: str = ""  # name of a function below that adds what only this one has


@dataclass
class Tab:
    name: str
    title: str
    stations: tuple


TABS = (
    Tab("basic", "Sources, outlets and a law", (
        Station("1 2 binaural",
                "Headphones, please. Click 1, which switches audio on, then 2, which sends the source round your head. The "
                "arguments of the object are the numbers of sources and outlets, a type and a subtype.",
                ("source 1 aed 30 0 1 | azimuth, elevation, distance", "source 1 azim 90 | to the right, as far as before",
                 "source 1 xyz -1 1 0 | right, front, up, in metres", "source 1 mute 1 | this source glides to silence",
                 "source 1 mute 0 | and back", "clear", "info", "version"),
                ("interpolationtime", "automute", "mute", "bypass", "sourcespositions"), motion=ROUND),)),
    Tab("layouts", "Where the loudspeakers are", (
        Station("2 4 vbap2d",
                "Every outlet is a loudspeaker with a place: one message for all of them, or one for each. Azimuths are in "
                "degrees, 0 in front, positive to the right; elevations positive upwards; distances in metres.",
                ("speakers az -45 45 135 -135 | a square, by azimuths",
                 "speakers aed -30 0 2 30 0 2 110 0 2 -110 0 2 | a film layout",
                 "loudspeakers xy -1 1 1 1 1 -1 -1 -1 | the same message by its long name",
                 "speaker 2 aed 60 0 1.5 | the second one alone", "loudspeaker 2 azim 45 | its azimuth alone"),
                ("speakerspositions",), ("pink~", "cycle~ 330"), ROUND),)),
    Tab("laws", "One sound, many laws", (
        Station("", "A click on a number sends the sound into that object, at first into the third. All take the same messages. "
                    "Most cords are hidden: unlock the patcher to see them.", extra="laws"),)),
    Tab("distance", "Every loudspeaker, the nearer the louder", (
        Station("1 4 dbap3d", "The loudspeakers may stand anywhere in a room. The spread makes a source wide.",
                ("source 1 xyz 0.5 0.2 0 | between the loudspeakers", "source 1 spread 40 | 0 (a point) to 100",
                 "source 1 spreadxyz 10 40 0 | another width along each axis"),
                ("spread", "spreadmode", "spreadxyz", "muteoutside"), motion=ROUND),)),
    Tab("neighbours", "The nearest loudspeakers, and a square of corners", (
        Station("1 4 knn", "Each source sounds from its nearest loudspeakers alone.",
                ("source 1 numneighbors 2 | two of them", "source 1 numneighbors 4 | all of them"), motion=ROUND),
        Station("1 4 panr", "A square with four corners.",
                ("corners -45 45 135 -135 | azimuths, from the left front clockwise",), motion=ROUND))),
    Tab("coordinates", "Every way to say where", (
        Station("1 4 vbap2d",
                "x points to the right, y to the front, z up. A position is set as a whole, one coordinate at a time, or by "
                "steps from where it is. Loudspeakers take the same words.",
                ("source 1 xyz 1 1 0 | three coordinates", "source 1 xy -1 1 | two, z becomes 0",
                 "source 1 x 0.5 | x alone, the others stay", "source 1 y 2 | y alone", "source 1 z 0 | z alone",
                 "source 1 x++ 0.1 | a step to the right", "source 1 y++ -0.1 | a step to the back", "source 1 z++ 0.1 | a step up",
                 "source 1 ade 30 2 0 | azimuth, distance, elevation",
                 "source 1 aed 30 0 2 | azimuth, elevation, distance", "source 1 ae 30 10 | at a metre",
                 "source 1 ad 30 2 | on the horizon", "source 1 az -90 | at a metre on the horizon", "source 1 azim 90 | the azimuth alone",
                 "source 1 azim++ 10 | a step clockwise", "source 1 elev 20 | the elevation alone",
                 "source 1 elev++ -5 | a step down", "source 1 dist 2 | the distance alone",
                 "source 1 dist++ 0.5 | half a metre farther", "source 1 dist*= 0.5 | half as far",
                 "source 1 quilo3 30 2 0 | as ade, azimuth positive to the left",
                 "source 1 wfs 30 2 | as ad, azimuth positive to the left")),)),
    Tab("HOA", "Ambisonics of any order", (
        Station("1 4 hoa3d",
                "The outlets are the components of a sound field, 4, 9, 16 and so on (3, 5, 7 for hoa2d), for a decoder of your "
                "choice. A source in front is encoded in the component Y. Here W and X alone are heard, as by two cardioid "
                "microphones that look to the left and to the right.",
                ("source 1 aed 30 20 1 | directions count, distances do not",), ("encoding", "hoamode"), motion=ROUND),
        Station("1 3 nfchoa2d", "The same with the curvature of near sources.",
                ("source 1 dist 0.5 | nearer than the loudspeakers", "source 1 dist 4 | behind them"),
                ("speakersradius", "nfchighpass"), motion=ROUND))),
    Tab("binaural", "Two ears", (
        Station("1 2 binaural", "Headphones, please. A measured head is built in; other sets are files that end in .hrtf.",
                ("load kemar | the built-in set, or the name of a file", "read kemar | the same",
                 "listener aed 0 0 0 | where the head is", "crossfadetype cosine | linear, cosine or squareCosine",
                 "implementation realisation auto | auto, cells or fir"),
                ("hrtffile", "crossfadetime", "itdtype", "itdlatency", "headradius", "listenerposition"),
                motion=ROUND),
        Station("1 2 binaural snowman", "A head on a torso, by their sizes instead of a measurement.",
                ("source 1 elev 80 | reflections of the shoulders", "source 1 elev -60 | in their shadow"),
                ("torsoreflection", "torsoradius", "neckheight"), motion=ROUND))),
    Tab("near ears", "Within arm's reach of the ears", (
        Station("1 2 binaural nearfield", "What changes nearer than 1.4 metres: level, the shadow of the head, delays.",
                ("source 1 dist 0.2 | at the ear", "source 1 dist 2 | as the plain type", "loadnf none | the built-in filters",
                 "loadNF none | the same"),
                ("radius", "nearfieldhrtffile", "distanceattenuation", "crossearselection", "nfcompensationfilters",
                 "hrtffilters", "gainscorrection", "delayscorrection"), motion=ROUND),)),
    Tab("subwoofers", "Bass that follows the sources", (
        Station("1 4 subwoofers", "Each source is low-passed, then panned between subwoofers as vbap2d does.",
                ("source 1 azim 120 | to the right and behind",), ("cutoff",), motion=ROUND),)),
    Tab("OSC", "Control from the network", (
        Station("2 4 vbap2d",
                "Messages whose name is an OSC address, and packets of udpreceive, take effect with the next signal vector. "
                "postosc lists every address.",
                ("/source/1/aed 30 0 2 | as source 1 aed 30 0 2", "/source/2/mute 1 | the second source glides to silence",
                 "/source/2/mute 0 | and back", "/speakers/az -45 45 135 -135 | as speakers az -45 45 135 -135",
                 "/dsp/mute 1 | the whole object is silent", "/dsp/mute 0 | and sounds again",
                 "/attribute/interpolationtime 20 | any attribute",
                 "/adm/obj/1/azim 30 | ADM-OSC: left is positive", "/adm/config/dmax 5 | ADM-OSC: a distance of 1 is five metres",
                 "postosc"), sources=("pink~", "cycle~ 330"), extra="network", motion="/source/1/azim $1"),)),
    Tab("state", "What the object knows, and how to keep it", (
        Station("2 4 vbap2d",
                "The dump outlet answers get messages and dumps. Dictionaries, presets and pattr keep the state. The four attributes on "
                "the right are set by the arguments of the box, and fixed from then on.",
                ("getinterpolationtime | any attribute answers so", "dump | all attributes", "dump sourcespositions | one of them",
                 "dumpdict | everything as a dictionary", "dictionary quilo-state | and back",
                 "exportdict", "readdict", "postattributes", "postdspstatus", "postdspstate",
                 "generatexml | for developers: writes a file"),
                ("numinputs", "numoutputs", "type", "subtype"), extra="state"),)),
)


def plain(markup):
    return re.sub(r"\s+", " ", re.sub(r"<[^>]*>", "", markup)).strip()


def lines_of(text, width, size=12.0):
    return int(text_width(text, size) // width) + 1


def comment(tab, x, y, text, width, size=12.0):
    width = min(width, text_width(text, size) + 1.0)
    count = lines_of(text, width, size)
    return tab.add("comment", x, y, text=text, size=(width, 4.0 + count * round(size * 1.35)), linecount=count,
                   fontsize=size)


class HelpPatcher:
    """Builds the tabs and keeps account of what they show."""

    def __init__(self, facts, class_name):
        self.class_name = class_name
        self.see_also = facts.see_also
        self.messages = {message.name: message for message in facts.messages}
        self.attributes = {a.name: a for a in facts.attributes if not a.get("alias")}
        self.shown = set()

    def content(self):
        tabs = [(tab.name, self.tab(tab)) for tab in TABS]
        missing = (set(self.messages) - set(NOT_FOR_CLICKING) | set(self.attributes)) - self.shown
        if missing:
            raise ValueError("no tab of the help patcher shows " + ", ".join(sorted(missing)))
        unknown = self.shown - set(self.messages) - set(self.attributes)
        if unknown:
            raise ValueError("the help patcher shows what the object has not: " + ", ".join(sorted(unknown)))
        return tabbed(tabs + [("?", self.more())])

    def more(self):
        """The last tab: where to go from here."""
        tab = Patcher()
        comment(tab, LEFT - 16.0, 10.0, f"{self.class_name}: where to go from here", WIDTH - LEFT, 18.0)
        comment(tab, LEFT, 44.0, "Examples, each a patcher to start from:", 500.0)
        opener = tab.add("newobj", LEFT, 70.0 + (len(EXAMPLES) + 0.5) * ROW, text="pcontrol")
        for k, (name, (title, _)) in enumerate(EXAMPLES.items()):
            message = tab.add("message", LEFT, 70.0 + k * ROW, text=f"loadunique {name}.maxpat")
            comment(tab, LEFT + 260.0, message.rectangle[1] + 1.0, title, 400.0)
            tab.connect(message, 0, opener, 0, bus=LEFT - 14.0)
        comment(tab, LEFT, opener.bottom + 20.0, "All messages, attributes and types: the reference page of the object. All types on "
                "one page: Extras, quilo. Related objects: " + ", ".join(self.see_also) + ".", WIDTH - 2 * LEFT)
        return tab

    def tab(self, topic):
        tab = Patcher()
        tab.width = WIDTH
        comment(tab, LEFT - 16.0, 10.0, f"{self.class_name}: {topic.title}", WIDTH - LEFT, 18.0)
        y = 44.0
        for station in topic.stations:
            y = self.station(tab, y, station, is_alone=len(topic.stations) == 1) + 20.0
        return tab

    def station(self, tab, y, station, is_alone):
        y = comment(tab, LEFT, y, station.about, WIDTH - 2 * LEFT).bottom + 8.0
        if not station.box:
            return getattr(self, station.extra)(tab, y, station)
        half = (len(station.messages) + 1) // 2 if len(station.messages) > 12 and not station.attributes else None
        messages, left = self.message_rows(tab, LEFT, y, station.messages[:half])
        attributes, right = self.attribute_rows(tab, y, station.attributes)
        if half:
            attributes, right = self.message_rows(tab, RIGHT - 70.0, y, station.messages[half:])
        if station.motion:
            mover, right = motion_boxes(tab, right + 6.0, station.motion, RIGHT, "2" if is_alone else "3")
            attributes.append(mover)
        ports = self.target(Patcher(), 0.0, station)  # where its inlets will lie
        sources, left = source_boxes(tab, left + 6.0, [(text, ports.port(k, ports.inlets) - 9.5)
                                                       for k, text in enumerate(station.sources)], not is_alone)
        target = self.target(tab, max(left, right) + 20.0, station)
        for box in messages:
            tab.connect(box, 0, target, 0, bus=LEFT - 14.0)
        for box in attributes:
            tab.connect(box, 0, target, 0, bus=box.rectangle[0] - 12.0)
        for k, box in enumerate(sources):
            tab.connect(box, 0, target, k)
        bottom = self.outputs(tab, target, station)
        return getattr(self, station.extra)(tab, target, bottom) if station.extra else bottom

    def message_rows(self, tab, x, y, statements):
        boxes = []
        for row in statements:
            statement, _, about = (part.strip() for part in row.partition("|"))
            name = "anything" if statement.startswith("/") else statement.split()[0]
            if name in self.messages or name.removeprefix("get") not in self.attributes:
                self.shown.add(name)
                about = about or plain(self.messages[name].digest if name in self.messages else "")
            boxes.append(tab.add("message", x, y, text=statement))
            comment(tab, max(x + 190.0, boxes[-1].right + 6.0), y + 1.0, about, 290.0)
            y += ROW
        return boxes, y

    def attribute_rows(self, tab, y, names):
        boxes = []
        for name in names:
            self.shown.add(name)
            hint = plain(self.attributes[name].description) if name in self.attributes else ""
            boxes.append(tab.add("attrui", RIGHT, y, attr=name, text_width=130.0, hint=hint, annotation=hint, lock=1,
                                 size=(300.0, 22.0)))
            y += ROW
        return boxes, y

    def target(self, tab, y, station):
        inlets, outlets = (int(n) for n in station.box.split()[:2])
        text = f"{self.class_name} {station.box}"
        name = {"varname": "panner-state"} if station.extra == "state" else {}  # for the pattr beside it
        return tab.add("newobj", LEFT, y, text=text, size=(max(300.0, 70.0 * (outlets + 1)), 22.0), inlets=inlets,
                       outlets=["signal"] * outlets + [""], **name)

    def outputs(self, tab, target, station):
        outlets = len(target.outlets) - 1
        y = target.bottom + 24.0
        for k in range(outlets):
            meter = tab.add("meter~", target.port(k, outlets + 1) - 9.5, y, size=(56.0, 12.0))
            tab.connect(target, k, meter, 0)
        printer = tab.add("newobj", target.right + 20.0, y, text="print quilo")
        tab.connect(target, outlets, printer, 0)
        heard = [(target, k) for k in range(outlets)]
        if "hoa" in station.box:
            heard, y = self.cardioids(tab, target, y + 30.0)
        if len(heard) > 2:
            # As wide as the outlets of the object, so that the cords run straight.
            width = 19.0 + target.port(outlets - 1, outlets + 1) - target.port(0, outlets + 1)
            dac = tab.add("newobj", LEFT, y + 36.0, text="dac~ " + " ".join(str(k + 1) for k in range(outlets)),
                          inlets=outlets, size=(width, 22.0))
            for k, (box, outlet) in enumerate(heard):
                tab.connect(box, outlet, dac, k)
            return audio_switch(tab, dac.bottom + 10.0).bottom
        switch = audio_switch(tab, y + 30.0)
        for k, (box, outlet) in enumerate(heard):
            tab.connect(box, outlet, switch, k)
        return switch.bottom

    @staticmethod
    def cardioids(tab, target, y):
        """First-order components, W first and X last, heard to the left and to the right.
        @return the ends, and the y below them"""
        ends = []
        for k, sign in enumerate("-+"):
            mixed = tab.add("newobj", LEFT + 110.0 * k, y, text=f"{sign}~", size=(80.0, 22.0))
            half = tab.add("newobj", LEFT + 110.0 * k, y + ROW + 4.0, text="*~ 0.5", size=(80.0, 22.0))
            tab.connect(target, 0, mixed, 0)
            tab.connect(target, len(target.outlets) - 2, mixed, 1)
            tab.connect(mixed, 0, half, 0)
            comment(tab, half.rectangle[0], half.bottom + 2.0, ("left", "right")[k], 60.0)
            ends.append((half, 0))
        return ends, y + 2 * ROW

    def laws(self, tab, y, station):
        """A grid of laws behind one switch."""
        names = ("angular", "surround", "vbap2d", "vbip2d", "vbap", "vbip", "dbap", "vdbap", "knn", "spcap", "panr",
                 "subwoofers")
        noise = tab.add("newobj", 400.0, y, text="pink~")
        quiet = tab.add("newobj", 400.0, y + ROW, text="*~ 0.1")
        gate = tab.add("newobj", LEFT, y + 3 * ROW, text=f"gate~ {len(names)} 3", size=(430.0, 22.0),
                       outlets=["signal"] * len(names))
        tab.connect(noise, 0, quiet, 0)
        tab.connect(quiet, 0, gate, 1)
        mover, _ = motion_boxes(tab, y, ROUND, 640.0, "2")
        dac = tab.add("newobj", LEFT, y + 15 * ROW, text="dac~ 1 2 3 4", inlets=4, size=(280.0, 22.0))
        switch = audio_switch(tab, dac.bottom + 10.0)
        for k, name in enumerate(names):
            pick = tab.add("message", LEFT + 30.0 * k, y, text=str(k + 1), size=(28.0, 22.0))
            tab.connect(pick, 0, gate, 0, bus=LEFT - 14.0)
            x, top = LEFT + 280.0 * (k % 3), y + (5 + 2.5 * (k // 3)) * ROW
            comment(tab, x, top, str(k + 1), 24.0)
            law = tab.add("newobj", x + 26.0, top, text=f"{self.class_name} 1 4 {name}", size=(230.0, 22.0), inlets=1,
                          outlets=["signal"] * 4 + [""])
            tab.connect(gate, k, law, 0, hidden=True)
            tab.connect(mover, 0, law, 0, hidden=True)
            for outlet in range(4):
                meter = tab.add("meter~", law.port(outlet, 5) - 9.5, law.bottom + 4.0, size=(44.0, 10.0))
                tab.connect(law, outlet, meter, 0)
                tab.connect(law, outlet, dac, outlet, hidden=True)
        return switch.bottom

    def network(self, tab, target, bottom):
        """Where packets come in."""
        port = tab.add("newobj", RIGHT - 60.0, target.rectangle[1], text="udpreceive 7400")
        comment(tab, port.right + 6.0, port.rectangle[1] + 1.0, "packets to port 7400 of this machine", 260.0)
        tab.connect(port, 0, target, 0, bus=port.rectangle[0] - 8.0)
        return bottom

    def state(self, tab, target, bottom):
        """Objects that keep the state of the one above."""
        x = target.right + 130.0
        y = target.rectangle[1]
        route = tab.add("newobj", x, y, text="route dictionary")
        name = tab.add("newobj", x, y + ROW + 4.0, text="prepend dictionary")
        kept = tab.add("newobj", x, y + 2 * ROW + 8.0, text="dict quilo-state")
        comment(tab, kept.right + 6.0, y + 2 * ROW + 9.0, "what dumpdict fills", 160.0)
        tab.connect(target, len(target.outlets) - 1, route, 0)
        tab.connect(route, 0, name, 0)
        tab.connect(name, 0, kept, 1)
        memory = tab.add("preset", x, y + 3.5 * ROW + 8.0)
        comment(tab, memory.right + 6.0, memory.rectangle[1], "shift-click stores, click recalls", 260.0)
        tab.connect(memory, 0, target, 0, bus=x - 12.0)
        y = memory.bottom + 16.0
        bound = tab.add("newobj", x, y, text="pattr quilo-pan @bindto panner-state")
        comment(tab, bound.right + 6.0, y + 1.0, "the whole state", 130.0)
        storage = tab.add("newobj", x, y + 2 * ROW + 8.0, text="pattrstorage quilo-states @savemode 0")
        for k, (text, about) in enumerate((("store 1", "keeps it"), ("1", "recalls it"))):
            message = tab.add("message", x + 150.0 * k, y + ROW + 4.0, text=text)
            comment(tab, message.right + 4.0, y + ROW + 5.0, about, 100.0)
            tab.connect(message, 0, storage, 0)
        return max(bottom, storage.bottom)


def step(tab, x, y, number):
    """A numbered mark beside what is to be clicked."""
    return tab.add("textbutton", x, y, text=number, rounded=60.0, ignoreclick=1, fontface=1)


def audio_switch(tab, y):
    """A loudspeaker that starts the audio of its own tab, not that of the others."""
    switch = tab.add("ezdac~", LEFT, y, local=1)
    mark = step(tab, switch.right + 8.0, y + 12.0, "1")
    comment(tab, mark.right + 4.0, y + 12.0, "audio on and off", 200.0)
    return switch


def source_boxes(tab, y, sources, is_gated):
    """Quiet sounds, pairs of an object and the x of its inlet; gated ones wait for a click.
    @return their last boxes, and the y below them"""
    ends = []
    for text, x in sources:
        sound = tab.add("newobj", x, y, text=text, size=(80.0, 22.0))
        quiet = tab.add("newobj", x, sound.bottom + 8.0, text="*~ 0.1", size=(80.0, 22.0))
        tab.connect(sound, 0, quiet, 0)
        ends.append(quiet)
        if is_gated:
            gate = tab.add("newobj", x, quiet.bottom + 16.0, text="gate~ 1", size=(80.0, 22.0), outlets=["signal"])
            toggle = tab.add("toggle", x + 120.0, sound.rectangle[1])
            mark = step(tab, toggle.right + 8.0, toggle.rectangle[1] + 2.0, "2")
            comment(tab, mark.right + 4.0, mark.rectangle[1], "this sound", 100.0)
            tab.connect(quiet, 0, gate, 1)
            tab.connect(toggle, 0, gate, 0, bus=x + 100.0)
            ends[-1] = gate
    return ends, max(box.bottom for box in ends) + 4.0


def motion_boxes(tab, y, statement, x, number):
    """A toggle that lets a value run round the circle. @return the box that says where, and the y below"""
    toggle = tab.add("toggle", x, y)
    mark = step(tab, toggle.right + 8.0, y + 2.0, number)
    comment(tab, mark.right + 4.0, y + 2.0, "go round", 200.0)
    metro = tab.add("newobj", x, y + ROW + 2.0, text="metro 20", size=(70.0, 22.0))
    counter = tab.add("newobj", x, y + 2 * ROW + 2.0, text="counter 0 359", size=(100.0, 22.0))
    message = tab.add("message", x, y + 3 * ROW + 2.0, text=statement)
    tab.connect(toggle, 0, metro, 0)
    tab.connect(metro, 0, counter, 0)
    tab.connect(counter, 0, message, 0)
    return message, y + 4 * ROW + 2.0


# Patchers of the examples folder: title and stations.
EXAMPLES = {
    "headphones": ("Two sources round your head", Station(
        "2 2 binaural @interpolationtime 20", "The toggle moves the first source; the second stays on the left.",
        ("source 2 aed -90 0 1 | the second source", "listener aed 0 0 0 | the middle of the room"),
        ("crossfadetime", "itdtype"), ("pink~", "cycle~ 330"), ROUND)),
    "quad": ("Four loudspeakers in a square", Station(
        "2 4 vbap2d @interpolationtime 20", "The outlets are front left, front right, back right, back left.",
        ("speakers az -45 45 135 -135 | the square", "source 2 azim 180 | the second source"),
        ("interpolationtime",), ("pink~", "cycle~ 330"), ROUND)),
    "room": ("Loudspeakers anywhere in a room", Station(
        "1 4 dbap3d @interpolationtime 20", "Loudspeakers by their places in metres; the source passes between them.",
        ("speakers xyz -2 3 0 2.5 3 0 3 -1 1 -2 -2 1 | four places",
         "source 1 spread 30 | wider", "source 1 spread 0 | a point"), ("spreadmode",), motion=ROUND)),
    "keeping-state": ("pattr, preset and dictionaries", Station(
        "2 4 vbap2d", "Move the source, store a preset, move it again, recall.",
        ("source 1 azim 30 | in front, on the right", "source 1 azim -120 | behind, on the left",
         "dumpdict | everything as a dictionary",
         "dictionary quilo-state | and back"), extra="state")),
}


def example(facts, class_name, name):
    """The content of one patcher of the examples folder."""
    title, station = EXAMPLES[name]
    return HelpPatcher(facts, class_name).tab(Tab(name, title, (station,))).content()
