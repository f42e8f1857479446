#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks that no room of the source tree includes from a room above it.

    tools/check_includes.py [ROOT]

Prints one line per fault and ends with status 1 when there is one. ROOT is the top of the tree.
"""
import re
import sys
from pathlib import Path

# What the files below each folder may include besides their own room. The longest folder wins.
FOUNDATION = ("text", "containers")
SIGNAL = FOUNDATION + ("math", "kernels")
FILING = SIGNAL + ("files", "osc", "filterdesign")
PROCESSING = FILING + ("processors",)


def velkdsp(*rooms):
    return tuple("libvelkdsp/src/" + room for room in rooms)


LIBVELKDSP = velkdsp(*PROCESSING, "audiofiles", "sdif")
LIBQUILO = tuple("libquilo/src/" + room for room in ("laws", "hrtf", "pan"))
ROOMS = {
    "libvelkdsp/src/text": (),
    "libvelkdsp/src/containers": (),
    "libvelkdsp/src/math": velkdsp(*FOUNDATION),
    "libvelkdsp/src/kernels": velkdsp(*FOUNDATION, "math"),
    "libvelkdsp/src/files": velkdsp(*SIGNAL),
    "libvelkdsp/src/osc": velkdsp(*SIGNAL, "files"),
    "libvelkdsp/src/filterdesign": velkdsp(*SIGNAL),
    "libvelkdsp/src/processors": velkdsp(*FILING),
    "libvelkdsp/src/audiofiles": velkdsp(*PROCESSING),
    "libvelkdsp/src/sdif": velkdsp(*PROCESSING),
    "libsdif/src": (),
    "libquilo/src/laws": velkdsp("math"),
    "libquilo/src/hrtf": LIBVELKDSP + ("libsdif/src",),
    "libquilo/src/pan": LIBVELKDSP + ("libsdif/src", "libquilo/src/laws", "libquilo/src/hrtf"),
    "maxapi": (),
    "src/max": LIBVELKDSP + ("maxapi",),
    "src": LIBVELKDSP + LIBQUILO + ("maxapi", "src/max"),
    "host/reading": (),
    "host/api": LIBVELKDSP + ("maxapi", "host/reading"),
    "host/picture": LIBVELKDSP,
    "host/validator": LIBVELKDSP + ("libquilo/src/laws", "maxapi", "host", "host/api"),
    # Named layouts are shared with the engine; what the host plays stays in the module.
    "host": LIBVELKDSP + ("libquilo/src/laws", "maxapi", "host/reading", "host/api", "host/picture", "host/validator"),
    "tools": LIBVELKDSP + LIBQUILO + ("libsdif/src",),
    "benchmarks": LIBVELKDSP + LIBQUILO + ("libsdif/src", "tests/reference"),
    "benchmarks/src": ("host/api", "benchmarks"),
    "tests/reference": LIBVELKDSP + ("libquilo/src/laws",),
    "tests": LIBVELKDSP + LIBQUILO + ("libsdif/src", "tests/reference"),
    "tools/sofa2hrtf": LIBVELKDSP + LIBQUILO + ("libsdif/src",),
    "tests/tools": LIBVELKDSP + LIBQUILO + ("libsdif/src", "tests", "tests/reference", "tools/sofa2hrtf"),
    # The tests of the object and of its host are the only others that see Max.
    "tests/src": LIBVELKDSP + LIBQUILO + ("maxapi", "src", "src/max", "host", "host/api", "tests", "tests/reference"),
    "tests/races": LIBVELKDSP + LIBQUILO + ("maxapi", "host/api", "tests", "tests/reference", "tests/src"),
    "tests/fuzz": LIBVELKDSP + LIBQUILO + ("host", "tests", "tools/sofa2hrtf"),
    "tests/host": LIBVELKDSP + ("maxapi", "host", "host/api", "host/picture", "tests", "tests/reference"),
}

# The files of host/api, from the ground up: each includes, and calls functions of, files before it
# only. Headers that are not here (the API's own, HostBridge.h) say what the whole library offers.
API_ROOM = "host/api"
API_ORDER = ("ApiCallWatch", "ApiSymbols", "ApiRecords", "ApiReports", "ApiThreadState", "ApiFaults", "ApiMemory",
             "ApiAtoms", "ApiAtomText", "ApiFiles", "ApiClasses", "ApiObjects", "ApiConsole", "ApiOutlets",
             "ApiThreads", "ApiSystemThreads", "ApiClocks", "ApiAttributes", "ApiAttributeAccess",
             "ApiAttributeProperties", "ApiAtomArrays", "ApiDictionaries", "ApiAttributeArguments", "ApiJsonText",
             "ApiJson", "ApiDispatch", "ApiBinbufs", "ApiWatchers", "ApiDialogs", "ApiFileUsage", "ApiMsp", "HostBridge")

# Where the compiler looks, and what it finds elsewhere.
INCLUDE_FOLDERS = ("libvelkdsp/src", "libquilo/src", "libsdif/src", "src", "src/max", "maxapi", "host",
                   "host/api", "tools/sofa2hrtf", "tests", "benchmarks")
GENERATED = {"QuiloProject.h"}

# Product rooms know the standard library alone, whose headers have no extension. Exceptions are
# the instruction sets and the host's one platform file.
PRODUCT = ("libvelkdsp/", "libquilo/", "libsdif/", "src/", "maxapi/", "host/")
MACHINE_HEADERS = {"libvelkdsp/src/kernels": ("immintrin.h", "xmmintrin.h", "intrin.h")}
PLATFORM_FILE = re.compile(r"^host/(api/)?\w*Platform\w*\.cpp$")

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')


def room_of(path):
    """The longest folder of ROOMS that holds the file."""
    inside = [room for room in ROOMS if path.startswith(room + "/")]
    return max(inside, key=len, default=None)


def resolve(root, path, name):
    """The file that `#include "name"` in `path` finds, from the top of the tree; None for none."""
    for folder in (str(Path(path).parent),) + INCLUDE_FOLDERS:
        if (root / folder / name).is_file():
            return folder + "/" + name
    return None


def quoted_fault(root, path, room, name):
    if name in GENERATED:
        return None
    if ".." in Path(name).parts:
        return f'"{name}" climbs out of its folder'
    target = resolve(root, path, name)
    if target is None:
        return f'"{name}" is nowhere in the tree'
    target_room = room_of(target)
    if target_room == room or target_room in ROOMS[room]:
        return None
    return f'"{name}" is in {target_room}, which {room} must not know'


def angle_fault(path, room, name):
    if not path.startswith(PRODUCT) or PLATFORM_FILE.match(path):
        return None
    if "." not in name and "/" not in name or name in MACHINE_HEADERS.get(room, ()):
        return None
    return f"<{name}> is not in the standard library"


def faults_of(root, path):
    room = room_of(path)
    if room is None:
        yield 1, "is in no room"
        return
    for number, line in enumerate((root / path).read_text(encoding="utf-8").splitlines(), 1):
        found = INCLUDE.match(line)
        if not found:
            continue
        quoted, angle = found.groups()
        fault = quoted_fault(root, path, room, quoted) if quoted else angle_fault(path, room, angle)
        if fault:
            yield number, fault


def code_of(file):
    """The text without comments and literals, line by line."""
    text = re.sub(r'//[^\n]*|"(?:[^"\\\n]|\\.)*"', "", file.read_text(encoding="utf-8"))
    return text.splitlines()


def functions_of(sources):
    """Where each function that a header declares is defined: in a line that begins with its type."""
    declared, homes = set(), {}
    for path, lines in sources.items():
        if path.suffix == ".h":
            declared.update(re.findall(r"\b(\w+)\(", "\n".join(lines)))
    for path, lines in sources.items():
        if path.suffix != ".cpp" or path.stem not in API_ORDER:
            continue
        is_private = False
        for line, code in zip(path.read_text(encoding="utf-8").splitlines(), lines):
            is_private = line == "namespace {" or is_private and line != "}  // namespace"
            found = re.match(r"[A-Za-z][\w:<>*& ]*[ *&](\w+)\(", code)
            if found and not is_private and found.group(1) in declared:
                homes.setdefault(found.group(1), path.stem)
    return homes


def order_faults(root):
    """Includes and calls in host/api that point up."""
    files = [file for folder in ("maxapi", API_ROOM) for file in sorted((root / folder).glob("*.*"))
             if file.suffix in (".h", ".cpp")]
    sources = {file: code_of(file) for file in files}
    homes = functions_of(sources)
    rank = {stem: place for place, stem in enumerate(API_ORDER)}
    for file in files:
        if file.parent.name != "api" or file.name == "HostBridge.h":
            continue
        path = file.relative_to(root).as_posix()
        if file.suffix == ".cpp" and file.stem not in rank:
            yield path, 1, "has no place in API_ORDER"
            continue
        own = rank.get(file.stem, -1)
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            found = re.match(r'#include "(\w+)\.h"', line)
            if found and found.group(1) != "HostBridge" and rank.get(found.group(1), -1) > own:
                yield path, number, f'"{found.group(1)}.h" stands above it'
        if file.suffix == ".h":
            continue
        for number, line in enumerate(sources[file], 1):
            for name in set(re.findall(r"\b[A-Za-z_]\w+\b", line)):
                if rank.get(homes.get(name), -1) > own:
                    yield path, number, f"{name} is defined above it, in {homes[name]}.cpp"


def main(arguments):
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent
    tops = sorted({room.split("/")[0] for room in ROOMS})
    sources = [file.relative_to(root).as_posix() for top in tops
               for file in sorted((root / top).rglob("*")) if file.suffix in (".h", ".cpp")]
    if not sources:
        print(f"{root}: no sources found")
        return 1
    count = 0
    for path in sources:
        for number, fault in faults_of(root, path):
            print(f"{path}:{number}: {fault}")
            count += 1
    for path, number, fault in order_faults(root):
        print(f"{path}:{number}: {fault}")
        count += 1
    print(f"{len(sources)} files, {count} forbidden includes")
    return 1 if count else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
