# SPDX-License-Identifier: MIT
"""What the module says about itself: attributes, messages, arguments, inlets and outlets, over all types.

Everything comes from the running module. An object of each type and subtype is made in the host, writes
its reference page (`generatexml`) and answers for its attributes; the pages are merged. So whatever is
built from these facts cannot differ from the object.
"""
import atexit
import os
import shlex
import shutil
import subprocess
import tempfile
import xml.etree.ElementTree as ET
from dataclasses import dataclass, field
from pathlib import Path
from xml.sax.saxutils import escape

CLASS = "quilo.pan~"
OUTLET_COUNTS = (4, 2, 3, 8, 9, 5, 1, 6, 7)


class Host:
    """Runs scripts in quilo-host, with a copy of the module in a folder of its own: an object writes its
    page beside the module."""

    def __init__(self, program):
        self.program = Path(program).resolve()
        folder = tempfile.TemporaryDirectory()
        atexit.register(folder.cleanup)
        self.folder = Path(folder.name)
        suffix = ".mxe64" if os.name == "nt" else ".so"
        self.module = shutil.copy(self.program.parent / (CLASS + suffix), self.folder)

    def run(self, *statements):
        """The console lines of a script."""
        run = subprocess.run(
            [self.program, "--quiet", "--duration", "0", "--module", self.module, "-"],
            input="\n".join(statements) + "\n", cwd=self.folder, capture_output=True, text=True)
        if run.returncode != 0:
            raise RuntimeError(f"{statements[0]}: {run.stderr.strip()}")
        return run.stdout.splitlines()

    def ask(self, box):
        """The reference page that an object writes of itself, as an element tree, and the values of its
        attributes, as words by name."""
        page = self.folder / f"{CLASS}.maxref.xml"
        page.unlink(missing_ok=True)
        lines = self.run(f"object {box}", "generatexml", "dump")
        words = (shlex.split(line.removeprefix("outlet: ")) for line in lines if line.startswith("outlet: "))
        return ET.parse(page).getroot(), {word[0]: word[1:] for word in words}


@dataclass
class Attribute:
    name: str
    kind: str  # int, float, symbol
    digest: str
    description: str  # markup of the reference page
    properties: dict  # name: (kind, value)
    readable: bool
    writable: bool
    size: int = 1  # numbers of values in an object of 2 sources
    per: str = ""  # "source" or "outlet" when there are `each` values for every one of them
    each: int = 1
    types: list = field(default_factory=list)  # those that have it

    def get(self, name, fallback=""):
        return self.properties.get(name, ("", fallback))[1]

    @property
    def choices(self):
        return self.get("enumvals").removeprefix("value = |").split("|") if self.get("enumvals") else []


@dataclass
class Message:
    name: str
    arguments: list  # of (name, kind)
    digest: str
    description: str


@dataclass
class Facts:
    digest: str
    description: str
    author: str
    copyright: str
    version: str  # the number alone
    see_also: list
    inlets: list  # of (kind, digest, description)
    outlets: list
    arguments: list  # of (name, kind, digest, description)
    attributes: list
    messages: list
    boxes: dict  # type, or "type subtype": box text


def markup(element):
    """What stands inside an element, tags included."""
    if element is None:
        return ""
    inner = escape(element.text or "") + "".join(ET.tostring(child, encoding="unicode") for child in element)
    return inner.strip()


def read_attribute(element):
    rows = element.findall("attributelist/attribute")
    return Attribute(
        element.get("name"), element.get("type"), markup(element.find("digest")), markup(element.find("description")),
        {row.get("name"): (row.get("type"), row.get("value")) for row in rows if row.get("name") != "description"},
        element.get("get") == "1", element.get("set") == "1")


def places(root, path):
    return [(e.get("name"), markup(e.find("digest")), markup(e.find("description"))) for e in root.findall(path)]


def working(host, name):
    """Pages and values of objects of a type, by (inlets, outlets): one with 2 sources, then one with a third
    and one with other outlets, as far as the type has them. Empty where the type gives a silent object."""
    found = {}
    for inlets, candidates in ((2, OUTLET_COUNTS), (3, None)):
        for outlets in candidates or list(found)[0][1:]:
            page, values = host.ask(f"{CLASS} {inlets} {outlets} {name}")
            if values["type"] == [name.split()[0]]:
                found[inlets, outlets] = page, values
            if len(found) == 2 and inlets == 2:
                break
        if not found:
            break
    return found


def measure(attribute, sizes):
    """How many values an attribute has, and of what their number depends; `sizes` by (inlets, outlets)."""
    (first, attribute.size), *others = sizes.items()
    for counts, size in others:
        for axis, per in enumerate(("source", "outlet")):
            if counts[axis] != first[axis] and size != attribute.size:
                attribute.per, attribute.each = per, (size - attribute.size) // (counts[axis] - first[axis])


def read_facts(program):
    host = Host(program)
    whole, _ = host.ask(f"{CLASS} 2 4 vbap2d")
    of_class = {a.get("name"): read_attribute(a) for a in whole.findall("attributelist/attribute")}
    attributes, boxes = {}, {}
    for name in of_class["type"].choices + [f"binaural {word}" for word in of_class["subtype"].choices[1:]]:
        tried = working(host, name)
        if not tried:
            continue
        (inlets, outlets), (page, _) = next(iter(tried.items()))
        boxes[name] = f"{CLASS} {inlets} {outlets} {name}"
        for element in page.findall("attributelist/attribute"):
            attribute = read_attribute(element)
            measure(attribute, {counts: len(values.get(attribute.name, [""])) for counts, (_, values) in tried.items()})
            known = attributes.setdefault(attribute.name, attribute)
            known.types.append(name)
            merge(known, attribute)
    return Facts(
        markup(whole.find("digest")), markup(whole.find("description")),
        *(whole.find(f"metadatalist/metadata[@name='{name}']").text for name in ("author", "copyright")),
        whole.find("metadatalist/metadata[@name='version']").text.split()[0],
        [e.get("name") for e in whole.findall("seealsolist/seealso")],
        places(whole, "inletlist/inlet"), places(whole, "outletlist/outlet"),
        [(e.get("name"), e.get("type"), markup(e.find("digest")), markup(e.find("description")))
         for e in whole.findall("objarglist/objarg")],
        list(attributes.values()),
        [Message(e.get("name"), [(a.get("name"), a.get("type")) for a in e.findall("arglist/arg")],
                 markup(e.find("digest")), markup(e.find("description"))) for e in whole.findall("methodlist/method")],
        boxes)


def merge(known, other):
    """Adds to an attribute what only another type tells: further choices, and of what its size depends."""
    more = [choice for choice in other.choices if choice not in known.choices]
    if more:
        kind, value = known.properties["enumvals"]
        known.properties["enumvals"] = (kind, "|".join([value] + more))
    if other.per and not known.per:
        known.size, known.per, known.each = other.size, other.per, other.each
