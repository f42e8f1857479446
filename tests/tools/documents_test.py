#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the links of the documents and the names in them, and runs the commands and scenes that they show.

    tests/tools/documents_test.py FOLDER_OF_QUILO_HOST

Code stands between fences. What the language of a block says:

    sh       commands, run with bash from a folder that holds what the project holds, noise named voice.wav, out/voice-1.wav and
             out/voice-2.wav, and scene.txt, the last scene above the block
    quilo    a scene; without a line "object" it goes on with the last one. Lines "#> ..." are lines of the console,
             in this order; an error may be posted only where one of them is an error
    text, math, cpp, json, xml   are not run

A block of commands or a scene that cannot be run begins with "# not run: REASON", which readers see, too.
"""
import os
import random
import re
import subprocess
import sys
import tempfile
import wave
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BINARIES = Path(sys.argv[1]).resolve()
TOPS = sorted(p.name for p in ROOT.iterdir() if p.name not in ("build", "out", ".git"))
NAMED = re.compile(r"`((?:%s)/[\w.~/+-]+)`" % "|".join(map(re.escape, TOPS)))
IDENTIFIER = re.compile(r"`((?:\w+::)+\w+|[A-Z]\w*[a-z]\w*[A-Z]\w*)`")
LINK = re.compile(r"\]\(([^)\s]+)\)|\b(?:src|href)=\"([^\"]+)\"")


def parts(lines):
    """(line, language, text) of every stretch: prose has no language, a stretch of code that of its fence."""
    begin, language, held = 1, None, []
    for number, line in enumerate(lines, 1):
        if line.startswith("```"):
            yield begin, language, "\n".join(held) + "\n"
            begin, language, held = number + 1, (line[3:].strip() or "none") if language is None else None, []
        else:
            held.append(line)
    yield begin, language, "\n".join(held) + "\n"


def anchors(text):
    """The anchors of a page's headings."""
    found = set()
    for heading in re.findall(r"^#+ (.+)$", text, re.MULTILINE):
        words = re.sub(r"[^\w\- ]", "", re.sub(r"\]\([^)]*\)", "", heading).lower()).replace(" ", "-")
        number = 0
        while (anchor := f"{words}-{number}" if number else words) in found:
            number += 1
        found.add(anchor)
    return found


def prose(page):
    return "\n".join(text for _, language, text in parts(page.read_text(encoding="utf-8").splitlines()) if not language)


def check_names(page, words):
    """What is wrong with links, and with the files and identifiers that are named.

    @param words all words of the sources      @return (number of those looked at, faults)
    """
    faults, count = [], 0
    text = prose(page)
    for link in (a or b for a, b in LINK.findall(text)):
        if re.match(r"https?:|mailto:", link):
            continue
        count += 1
        path, _, anchor = link.partition("#")
        target = (page.parent / path).resolve() if path else page
        if not target.exists():
            faults.append(f"link to {link}: no such file")
        elif anchor and anchor not in anchors(prose(target)):
            faults.append(f"link to {link}: no such heading")
    for name in NAMED.findall(text):
        count += 1
        if not (ROOT / name).exists():
            faults.append(f"{name}: no such file")
    for name in IDENTIFIER.findall(text):
        count += 1
        faults += [f"{name}: {part} is not in the sources" for part in name.split("::") if part not in words]
    return count, faults


def prepared(folder):
    for name in (*TOPS, "build"):
        (folder / name).symlink_to(ROOT / name)
    (folder / "out").mkdir()
    noise = random.Random(1).randbytes(2 * 4800)
    for name in ("voice.wav", "out/voice-1.wav", "out/voice-2.wav"):
        with wave.open(str(folder / name), "wb") as f:
            f.setparams((1, 2, 48000, 0, "NONE", ""))
            f.writeframes(noise)


def run_scene(folder):
    """The faults of scene.txt; runs beyond its last statement."""
    text = (folder / "scene.txt").read_text(encoding="utf-8")
    ends = [float(time) for time in re.findall(r"^at ([\d.]+)", text, re.MULTILINE)]
    is_refused = re.search(r"^#> (error|bug)", text, re.MULTILINE)
    run = subprocess.run(["quilo-host", *([] if is_refused else ["--strict"]), "--quiet", "--duration",
                          str(max(ends, default=0.0) + 0.1), "scene.txt"], cwd=folder, capture_output=True, text=True)
    said = iter(run.stdout.splitlines())
    missing = [line for line in re.findall(r"^#> (.*)$", text, re.MULTILINE) if line not in said]
    faults = [f"not said: {line}" for line in missing[:1]] + ([run.stderr or "refused"] if run.returncode else [])
    return [f"{fault}\n{run.stdout}" for fault in faults]


def run_blocks(page):
    """@return (number of blocks run, faults, what is not run)"""
    count, faults, left = 0, [], []
    scene = ""
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        prepared(folder)
        for number, language, text in parts(page.read_text(encoding="utf-8").splitlines()):
            where = f"{page.relative_to(ROOT)}:{number}"
            if language is None:
                hidden = re.search(r"(\A|\n)\n    \S.*", text)
                faults += [f"{where}: code without fences: {hidden.group().strip()}"] if hidden else []
            elif language not in ("sh", "quilo"):
                faults += [] if language in ("text", "math", "cpp", "json", "xml") else [f"{where}: language {language}"]
            elif text.startswith("# not run: "):
                left.append(f"{where}: {text.splitlines()[0][11:]}")
            else:
                count += 1
                if language == "quilo":
                    scene = text if re.search(r"^object ", text, re.MULTILINE) else scene + text
                    (folder / "scene.txt").write_text(scene, encoding="utf-8")
                    faults += [f"{where}: {fault}" for fault in run_scene(folder)]
                else:
                    run = subprocess.run(["bash", "-euo", "pipefail", "-c", text], cwd=folder, capture_output=True, text=True)
                    faults += [f"{where}: status {run.returncode}\n{run.stdout}{run.stderr}"] if run.returncode else []
    return count, faults, left


def main():
    os.environ["PATH"] = f"{BINARIES}{os.pathsep}{os.environ['PATH']}"
    def listed(*patterns):
        lines = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", *patterns], cwd=ROOT, check=True,
                               capture_output=True, text=True).stdout.splitlines()
        return [ROOT / line for line in lines if (ROOT / line).is_file()]

    words = {word for file in listed("*.cpp", "*.h") for word in re.findall(r"\w+", file.read_text(encoding="utf-8"))}
    passed, faults, left = 0, [], []
    for page in listed("*.md"):
        links, wrong = check_names(page, words)
        blocks, failed, omitted = run_blocks(page)
        passed += links - len(wrong) + blocks - len(failed)
        faults += [f"{page.relative_to(ROOT)}: {fault}" for fault in wrong] + failed
        left += omitted
    for line in left:
        print("not run:", line)
    for fault in faults:
        print("FAIL", fault)
    print(f"{len(left)} blocks not run")
    print(f"{passed} passed, {len(faults)} failed")
    return 1 if faults or not passed else 0


if __name__ == "__main__":
    sys.exit(main())
