#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the import and export tables of the Windows module.

    check_module.py MODULE.mxe64

Its imports from MaxAPI.dll and MaxAudio.dll are names that Max exports, and exactly those of our
import lists; all else comes from libraries that every 64-bit Windows has; both entries are exported
and are one function; the version resource is there; the bytes depend neither on the folder nor on the
time of the build. Ends with "N passed, M failed".
"""
import os
import struct
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SYSTEM = {"kernel32.dll", "msvcrt.dll", "user32.dll", "advapi32.dll", "shell32.dll", "ntdll.dll"}
EXPORT, IMPORT, RESOURCE = 0, 1, 2
VERSION_RESOURCE = 16


class Module:
    """A PE32+ file, read by the layout that Microsoft publishes as "PE Format"."""

    def __init__(self, path):
        with open(path, "rb") as f:
            self.data = f.read()
        pe = self.number("<I", 0x3C)
        if self.data[:2] != b"MZ" or self.data[pe:pe + 4] != b"PE\0\0":
            sys.exit(f"{path}: not a PE file")
        self.machine, num_sections, self.time = struct.unpack_from("<HHI", self.data, pe + 4)
        optional = pe + 24
        if self.number("<H", optional) != 0x20B:
            sys.exit(f"{path}: not a 64-bit module")
        self.directories = [struct.unpack_from("<II", self.data, optional + 112 + 8 * k) for k in range(16)]
        table = optional + self.number("<H", pe + 20)
        self.sections = [struct.unpack_from("<IIII", self.data, table + 40 * k + 8) for k in range(num_sections)]

    def number(self, form, offset):
        return struct.unpack_from(form, self.data, offset)[0]

    def at(self, address):
        for size, start, raw_size, raw in self.sections:
            if start <= address < start + max(size, raw_size):
                return raw + address - start
        raise ValueError(f"address {address:#x} is in no section")

    def text(self, address):
        begin = self.at(address)
        return self.data[begin:self.data.index(b"\0", begin)].decode("ascii")

    def imports(self):
        names, entry = {}, self.at(self.directories[IMPORT][0])
        while True:
            lookup, _, _, name, first = struct.unpack_from("<IIIII", self.data, entry)
            if name == 0:
                return names
            wanted, thunk = names.setdefault(self.text(name).lower(), set()), self.at(lookup or first)
            while (value := self.number("<Q", thunk)) != 0:
                wanted.add(f"#{value & 0xFFFF}" if value >> 63 else self.text(value + 2))
                thunk += 8
            entry += 20

    def exports(self):
        if self.directories[EXPORT][0] == 0:
            return {}
        table = self.at(self.directories[EXPORT][0])
        count, functions, names, ordinals = struct.unpack_from("<IIII", self.data, table + 24)
        found = {}
        for k in range(count):
            ordinal = self.number("<H", self.at(ordinals) + 2 * k)
            found[self.text(self.number("<I", self.at(names) + 4 * k))] = self.number(
                "<I", self.at(functions) + 4 * ordinal)
        return found

    def has_version(self):
        if self.directories[RESOURCE][0] == 0:
            return False
        root = self.at(self.directories[RESOURCE][0])
        count = sum(struct.unpack_from("<HH", self.data, root + 12))
        return any(self.number("<I", root + 16 + 8 * k) == VERSION_RESOURCE for k in range(count))


def listed(*path):
    with open(os.path.join(ROOT, *path)) as f:
        lines = [line.strip() for line in f]
    return {line for line in lines if line and not line.startswith((";", "LIBRARY", "EXPORTS"))}


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    module = Module(sys.argv[1])
    imports, exports = module.imports(), module.exports()
    checks = [("64-bit x86", module.machine == 0x8664, hex(module.machine))]
    for library in ("MaxAPI", "MaxAudio"):
        used = imports.get(library.lower() + ".dll", set())
        foreign = used - listed("tests", "data", "max-exports", library + ".txt")
        checks.append((f"{library}.dll exports what is imported", used and not foreign, sorted(foreign)))
        other = used ^ listed("maxapi", library + ".def")
        checks.append((f"{library}.def lists what is imported", not other, sorted(other)))
    strangers = set(imports) - SYSTEM - {"maxapi.dll", "maxaudio.dll"}
    checks.append(("only system libraries besides", not strangers, sorted(strangers)))
    checks.append(("exports the two entries alone", set(exports) == {"ext_main", "main"}, sorted(exports)))
    checks.append(("both entries are one function", exports.get("ext_main") == exports.get("main"), exports))
    checks.append(("has a version resource", module.has_version(), "none"))
    checks.append(("holds no path of this machine", ROOT.encode() not in module.data, ROOT))
    checks.append(("holds no time", module.time == 0, module.time))
    for name, good, seen in checks:
        if not good:
            print(f"FAIL {name}: {seen}")
    passed = sum(bool(good) for _, good, _ in checks)
    print(f"{passed} passed, {len(checks) - passed} failed")
    return 0 if passed == len(checks) else 1


if __name__ == "__main__":
    sys.exit(main())
