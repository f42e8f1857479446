#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the Max package: a folder and a zip, checked, the same bytes from the same input.

    make_package.py --host HOST --module FILE.mxe64 --out FOLDER

HOST is a quilo-host beside the module of this machine, from which all texts come; FILE.mxe64 is the
module that ships. FOLDER gets quilo/ and quilo-VERSION.zip. Ends with the list of files; status 1 when
a check fails.
"""
import argparse
import json
import shutil
import struct
import subprocess
import sys
import xml.etree.ElementTree as ET
import zipfile
from pathlib import Path

from check_patcher import check
from facts import CLASS, Host, read_facts
from help import EXAMPLES, HelpPatcher, example
from overview import overview
from patcher import file_text
from reference import TAGS, reference_page

ROOT = Path(__file__).resolve().parents[2]
HERE = Path(__file__).resolve().parent
NAME = "quilo"
EPOCH = (1980, 1, 1, 0, 0, 0)  # the date of every file in the zip


def package_info(facts):
    return {
        "name": NAME, "displayname": CLASS, "version": facts.version, "author": facts.author,
        "description": f"{facts.digest}.", "tags": list(TAGS), "website": "", "homepatcher": f"{NAME}.maxpat",
        "max_version_min": "8.0", "max_version_max": "none",
        "os": {"windows": {"platform": ["x64"], "min_version": "none"}}, "extends": "", "extensible": 0,
        "package_extra": {"copyright": facts.copyright},
    }


def lookup(facts):
    """What the object explorer shows."""
    return {CLASS: {"digest": facts.digest, "module": "msp", "category": ["MSP Panning"]}}


def database():
    """The names of the package's externals, for Max's completion of object names."""
    return {"maxdb": {"externals": {CLASS: CLASS}}}


def icon(pixels):
    return subprocess.run(["rsvg-convert", "--width", str(pixels), "--height", str(pixels), HERE / "icon.svg"],
                          check=True, capture_output=True).stdout


def contents(facts, module):
    """The package's files: path in the package to bytes."""
    def text(words):
        return words.encode("utf-8")

    def data(value):
        return text(json.dumps(value, indent=4) + "\n")

    files = {
        "package-info.json": data(package_info(facts)),
        "readme.md": (HERE / "readme.md").read_bytes(),
        "license.md": (ROOT / "LICENSE").read_bytes(),
        "icon.png": icon(500),
        f"externals/{CLASS}.mxe64": module.read_bytes(),
        f"help/{CLASS}.maxhelp": text(file_text(HelpPatcher(facts, CLASS).content())),
        f"docs/{CLASS}.maxref.xml": text(reference_page(facts, CLASS)),
        f"extras/{NAME}.maxpat": text(file_text(overview(facts, CLASS, "quilo.png"))),
        f"interfaces/{NAME}-obj-qlookup.json": data(lookup(facts)),
        "interfaces/max.db.json": data(database()),
        "media/quilo.png": icon(224),
    }
    for name in EXAMPLES:
        files[f"examples/{name}.maxpat"] = text(file_text(example(facts, CLASS, name)))
    return files


def write_zip(path, files):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, content in sorted(files.items()):
            entry = zipfile.ZipInfo(f"{NAME}/{name}", EPOCH)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            archive.writestr(entry, content)


def faults_of(folder, archive, facts, host):
    """What is wrong with a package that was written, a line each."""
    faults = check(host, sorted(folder.rglob("*.max*[pt]")))
    info = json.loads((folder / "package-info.json").read_text(encoding="utf-8"))
    with zipfile.ZipFile(archive) as zipped:
        names = zipped.namelist()
    if {name.split("/")[0] for name in names} != {info["name"]} or folder.name != info["name"]:
        faults.append("the zip holds something beside the folder that package-info.json names")
    if len({name.lower() for name in names}) != len(names):
        faults.append("two names differ in case only")
    if not (folder / "extras" / info["homepatcher"]).is_file():
        faults.append("package-info.json names a home patcher that is not there")
    if struct.unpack(">II", (folder / "icon.png").read_bytes()[16:24]) != (500, 500):
        faults.append("the icon is not 500 by 500")
    page = ET.parse(folder / "docs" / f"{CLASS}.maxref.xml").getroot()
    for path, known in (("attributelist/attribute", facts.attributes), ("methodlist/method", facts.messages)):
        shown = [e.get("name") for e in page.findall(path)]
        if sorted(shown) != sorted(entry.name for entry in known):
            faults.append(f"the reference page does not hold every {path.split('/')[1]} exactly once")
    for entry in list(facts.messages) + list(facts.attributes):
        if not entry.description.strip() or len(entry.digest) > 60:
            faults.append(f"{entry.name} has no description or a digest of more than 60 characters")
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--host", required=True, type=Path)
    parser.add_argument("--module", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    options = parser.parse_args()
    facts = read_facts(options.host)
    files = contents(facts, options.module)
    folder = options.out / NAME
    shutil.rmtree(folder, ignore_errors=True)
    for name, content in files.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)
    archive = options.out / f"{NAME}-{facts.version}.zip"
    write_zip(archive, files)
    faults = faults_of(folder, archive, facts, Host(options.host))
    for name, content in sorted(files.items()):
        print(f"{len(content):9} {NAME}/{name}")
    print(f"{archive.stat().st_size:9} {archive.name}")
    for fault in faults:
        print(f"FAIL {fault}")
    print(f"{len(files)} files, {len(faults)} faults")
    sys.exit(bool(faults))


if __name__ == "__main__":
    main()
