# SPDX-License-Identifier: MIT
"""Writes the reference page of the package, quilo.pan~.maxref.xml, from the facts of the module.

It differs from the page that one object writes of itself in that it holds every type's attributes, sizes,
choices as lists, categories and tags, as the documentation viewer wants them.
"""
import xml.etree.ElementTree as ET
from xml.sax.saxutils import quoteattr

CATEGORIES = "MSP Panning, MSP Spatialization"
TAGS = ("spatial audio", "panning", "surround", "ambisonics", "vbap", "dbap", "binaural", "hrtf", "loudspeakers")
# Messages that may come without their arguments.
WITHOUT_ARGUMENTS = ("postattributes", "dumpdict", "readdict", "dump", "load", "read")
# Properties that stand elsewhere in the page.
ELSEWHERE = ("enumvals", "description")


def element(tag, content="", /, **attributes):
    """One element on one line; content is markup already."""
    words = "".join(f" {key}={quoteattr(str(value))}" for key, value in attributes.items())
    return f"<{tag}{words}>{content}</{tag}>" if content else f"<{tag}{words} />"


def told(digest, description):
    return [element("digest", digest), element("description", description)]


def block(tag, lines, /, **attributes):
    """An element around others, which are indented."""
    words = "".join(f" {key}={quoteattr(str(value))}" for key, value in attributes.items())
    return [f"<{tag}{words}>"] + ["    " + line for line in lines] + [f"</{tag}>"]


def gather(name, blocks):
    return block(name, [line for lines in blocks for line in lines])


def scope(attribute, all_types):
    """In which types there is the attribute, and how many values it has."""
    parts = []
    if attribute.per:
        values = "One value" if attribute.each == 1 else f"{attribute.each} values"
        parts.append(f"{values} for each {attribute.per}.")
    if len(attribute.types) < all_types:
        parts.append("Types: " + ", ".join(f"<m>{name}</m>" for name in attribute.types) + ".")
    return "".join("<br/> " + part for part in parts)


def choices(attribute):
    entries = [line for choice in attribute.choices
               for line in block("enum", told("", ""), name=choice)]
    return block("attribute", block("enumlist", entries), name="enumvals", get=1, set=1, type="symbol",
                 size=len(attribute.choices))


def properties(attribute):
    rows = [[element("attribute", name=name, get=1, set=1, type=kind, size=1, value=value)]
            for name, (kind, value) in attribute.properties.items() if name not in ELSEWHERE]
    return gather("attributelist", rows + ([choices(attribute)] if attribute.choices else []))


def attribute_entry(attribute, all_types):
    return block("attribute", told(attribute.digest, attribute.description + scope(attribute, all_types)) +
                 properties(attribute), name=attribute.name, get=int(attribute.readable), set=int(attribute.writable),
                 type=attribute.kind, size=attribute.size)


def message_entry(message):
    arguments = [element("arg", name=name, type=kind, optional=int(message.name in WITHOUT_ARGUMENTS), id=k)
                 for k, (name, kind) in enumerate(message.arguments)]
    return block("method", block("arglist", arguments) + told(message.digest, message.description), name=message.name)


def metadata(facts):
    entries = [("author", facts.author), ("copyright", facts.copyright), ("version", facts.version)]
    return block("metadatalist", [element("metadata", text, name=name)
                                  for name, text in entries + [("tag", tag) for tag in TAGS]])


def reference_page(facts, class_name):
    """The whole page. @raise xml.etree.ElementTree.ParseError when a text of the module is no markup"""
    lines = told(facts.digest, facts.description) + metadata(facts)
    for name, places in (("inlet", facts.inlets), ("outlet", facts.outlets)):
        lines += gather(name + "list", [block(name, told(digest, description), id=k, type=kind)
                                        for k, (kind, digest, description) in enumerate(places)])
    lines += gather("objarglist", [block("objarg", told(digest, description), name=name, type=kind, optional=1, id=k)
                                   for k, (name, kind, digest, description)
                                   in enumerate(facts.arguments)])
    lines += gather("methodlist", [message_entry(message) for message in facts.messages])
    lines += gather("attributelist", [attribute_entry(a, len(facts.boxes)) for a in facts.attributes])
    lines += block("seealsolist", [element("seealso", name=name) for name in facts.see_also])
    head = ['<?xml version="1.0" encoding="utf-8" standalone="yes"?>',
            '<?xml-stylesheet href="./_c74_ref.xsl" type="text/xsl"?>']
    page = "\n".join(head + block("c74object", lines, name=class_name, module="msp", category=CATEGORIES)) + "\n"
    ET.fromstring(page.encode())
    return page
