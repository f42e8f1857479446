#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fills in what the pages of docs/types/ say of attributes, messages, outlets and cost.

    make_type_pages.py [--host build/release/bin/quilo-host] [--docs docs]

A page's prose is written by hand; what stands between its lines "<!-- facts -->" and "<!-- end of facts -->" is
made here: numbers of outlets, attributes with their ranges and values and the messages that the type takes come
from the running module, the cost from the tables of docs/performance.md. The index, docs/types/README.md, has a
row for each page; the first paragraph of a page is its row there.
"""
import re
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent / "package"))
from facts import CLASS, Host, read_facts
from svg import drawing_options, write

HOME = Path(__file__).resolve().parent.parent
PAGES = HOME / "docs/types"
BEGIN, END = "<!-- facts -->", "<!-- end of facts -->"
# Messages that only some types take: an example of each, by the name that the page shows.
MESSAGES = {
    "`speakers`, `speaker`": "speaker 1 az 10", "`corners`": "corners -45 45 135 -135",
    "`source N spread`": "source 1 spread 10", "`source N spreadxyz`": "source 1 spreadxyz 10 10 10",
    "`source N numneighbors`": "source 1 numneighbors 2", "`listener`": "listener xyz 0 0 0", "`load`, `read`": "load kemar",
    "`crossfadetype`": "crossfadetype linear", "`implementation`": "implementation reduction 0", "`loadnf`": "loadnf none",
}
# Other types keep what these messages set, and nothing is heard of it.
WITH_SPREAD = ("dbap", "dbap3d", "spcap")
WITHOUT_LOUDSPEAKERS = ("xy", "ms", "ab", "bformat", "hoa2d", "hoa3d", "nfchoa2d", "nfchoa3d", "diffuse")
PLAIN = f"{CLASS} 2 4 vbap2d"


def filled(page, *stretches):
    """The text of a page with new lines between its marks, stretch after stretch."""
    parts = re.split(f"{BEGIN}.*?{END}", (PAGES / f"{page}.md").read_text(encoding="utf-8"), flags=re.DOTALL)
    made = ["\n".join([BEGIN, *lines, END]) for lines in stretches]
    return "".join(prose + stretch for prose, stretch in zip(parts, [*made, ""], strict=True))


def page_names():
    return sorted(file.stem for file in PAGES.glob("*.md") if file.stem != "README")


def answers(program, box, statements):
    """The lines of the console for each statement, and what the host said besides.

    Behind each statement stands a message that no object has: its refusal ends the lines of that statement.
    """
    script = [f"object {box}"] + [line for statement in statements for line in (statement, "host sync", "separator")]
    run = subprocess.run([program, "--duration", "0", "-"], input="\n".join(script) + "\n", capture_output=True, text=True)
    return [part.splitlines() for part in re.split(r'.*"separator"\n', run.stdout)], run.stderr


def outlets(program, words):
    """The numbers of outlets that a type takes, as words."""
    for count in (1, 10, 11):
        found = re.search(r"takes these numbers of outlets: (.*)", answers(program, f"{CLASS} 2 {count} {words}", [])[1])
        if found:
            numbers = found.group(1)
            return numbers if len(numbers) < 40 else ", ".join(numbers.split(", ")[:5]) + " and so on"
    return "any number"


def messages(program, box, name):
    """Those of MESSAGES that the type takes."""
    parts, _ = answers(program, box, MESSAGES.values())
    unheard = ["`source N spread`"] if name not in WITH_SPREAD else []
    unheard += ["`speakers`, `speaker`"] if name in WITHOUT_LOUDSPEAKERS or name.startswith("binaural") else []
    return [shown for shown, said in zip(MESSAGES, parts)
            if shown not in unheard and not any(line.startswith("error") for line in said)]


def performance_row(section, name):
    """The cells of a row of a table below a heading of performance.md, by its first cell; None without one."""
    text = (HOME / "docs/performance.md").read_text(encoding="utf-8")
    body = text.split(f"\n## {section}", 1)[1].split("\n## ", 1)[0]
    found = re.search(rf"^\| `{re.escape(name)}` \|(.*)\|$", body, re.MULTILINE)
    return [cell.strip() for cell in found.group(1).split("|")] if found else None


def cost(name):
    subtype = name.removeprefix("binaural-") if name != "binaural" else "direct"
    if name.startswith("binaural"):
        rest, moving, _ = performance_row("Headphones", subtype)
        return (f"nanoseconds per source and sample, 64 / 250 sources: at rest {rest}" + (f", moving {moving}" if moving else "") +
                " ([where and how](../performance.md))")
    count, moving, rest = performance_row("Every type", name)
    return (f"64 sources on {count} outlets, a vector of 64 samples, as parts of one dense 64 x 64 matrix product: moving "
            f"{moving}, at rest {rest} ([where and how](../performance.md#every-type))")


def plain(markup):
    """A sentence of the module's help as Markdown."""
    words = re.sub(r"<br */?>.*", "", markup)
    words = re.sub(r"\s*</?[mo]>\s*", lambda tag: " `" if "/" not in tag.group() else "` ", words)
    return re.sub(r"` ([.,;:])", r"`\1", re.sub(r"\s+", " ", words)).strip()


def values(attribute):
    low, high = attribute.get("min"), attribute.get("max")
    unit = {"msec": " ms", "sec": " s", "xyz": ""}.get(attribute.get("units"), "")
    if attribute.choices:
        return ", ".join(f"`{choice}`" for choice in attribute.choices)
    if (low, high) == ("0", "1") and attribute.kind == "int":
        return "0 or 1"
    span = f"{low} to {high}" if low and high else f"from {low}" if low else ""
    size = {"source": " a source", "outlet": " a loudspeaker"}.get(attribute.per, "")
    count = f"{attribute.each} numbers{size}" if attribute.per and attribute.each > 1 else f"one{size}" if size else ""
    return ", ".join(part for part in (span + unit if span else "", count) if part) or (
        "a name" if attribute.kind == "symbol" else "numbers")


def attribute_table(attributes, begin):
    rows = ["| attribute | values | begins as | |", "|---|---|---|---|"]
    for attribute in attributes:
        first = "" if attribute.per == "outlet" or attribute.name in ("sourcespositions", "numinputs", "numoutputs", "type") else \
            " ".join(begin.get(attribute.name, [])[:attribute.each if attribute.per else None])
        alias = attribute.get("alias")
        about = f"Another name of `{alias}`." if alias else plain(attribute.description)
        rows.append(f"| `{attribute.name}` | {values(attribute)} | {first} | {about} |")
    return rows


def facts_of(page, facts, common, host, program):
    """What a page says between its marks, as lines, and the numbers of outlets.

    @param common  the attributes of all types, which pages leave out
    """
    name = page.replace("-", " ")
    box = f"{PLAIN} diffuse" if name == "diffuse" else facts.boxes[name]
    _, begin = host.ask(box)
    own = [a for a in facts.attributes if a not in common and name in a.types and a.name != "speakerspositions"]
    own = [a for a in own if a.name != "spread" or name in WITH_SPREAD]
    taken = messages(program, box, name)
    count = outlets(program, " ".join(box.split()[3:]))
    lines = [f"- Box: `{box}`; outlets: {count}", f"- Cost: {cost(page)}"]
    if taken:
        lines.append("- Messages beside [those of all types](README.md#what-all-types-have): " + ", ".join(taken))
    if own:
        lines += ["", *attribute_table(own, begin)]
    return lines, count


def main():
    options = drawing_options(__doc__)
    facts = read_facts(options.host)
    host = Host(options.host)
    common = [a for a in facts.attributes if len(a.types) == len(facts.boxes)]
    index = ["| type | | outlets |", "|---|---|---|"]
    for page in page_names():
        lines, count = facts_of(page, facts, common, host, options.host)
        text = filled(page, lines)
        write(options.docs / "types" / f"{page}.md", text)
        about = " ".join(text.split("\n\n")[1].split())
        index.append(f"| [`{page.replace('-', ' ')}`]({page}.md) | {about} | {count} |")
    _, begin = host.ask(PLAIN)
    write(options.docs / "types/README.md", filled("README", index, attribute_table(common, begin)))


if __name__ == "__main__":
    main()
