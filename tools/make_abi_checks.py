#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes C++ that holds our declarations of the Max API against the rows of max-abi.tsv.

    make_abi_checks.py ROWS.tsv HEADER_FOLDER OUTPUT.cpp

Every row about something that the headers declare becomes static assertions: the size of a struct or
an alias, the offset and size of a field, the value of a constant, the prototype of a function. Rows
about anything else are counted. A function, struct, field or constant of ours without a row, a
function declared for the wrong library and a declaration that this reader does not understand are
errors, so nothing of ours goes unchecked.
"""
import os
import re
import sys

# Ours alone, opaque in the API or written there in terms of other types.
ALIASES_WITHOUT_ROW = {"max_long", "t_outlet", "t_inlet", "t_qelem", "t_clock", "t_binbuf", "t_patcher", "t_box",
                       "t_perfroutine64", "t_systhread"}
# The members of this union have no rows of their own.
STRUCTS_WITHOUT_FIELD_ROWS = {"word"}
BUILT_IN = {"short", "int", "long", "float", "double", "void *"}
LIBRARIES = {"MAXAPI_EXPORT": "MaxAPI.dll", "MAXAUDIO_EXPORT": "MaxAudio.dll"}
KINDS = ("struct", "field", "const", "func")


def read_rows(path):
    """kind -> name -> the other columns"""
    rows = {kind: {} for kind in KINDS}
    with open(path, encoding="utf-8") as f:
        for line in f:
            columns = line.rstrip("\r\n").split("\t")
            if columns == [""]:
                continue
            rows[columns[0]][columns[1].removeprefix("union ")] = columns[2:]
    return rows


def split_body(body, separator):
    return [part.strip() for part in body.split(separator) if part.strip()]


class Headers:
    """What a folder of headers declares, statement by statement."""

    def __init__(self, folder):
        self.functions, self.structs, self.aliases, self.constants, self.strange = {}, {}, [], [], []
        for name in sorted(os.listdir(folder)):
            if name.endswith(".h"):
                with open(os.path.join(folder, name), encoding="utf-8") as f:
                    self.read(f.read())

    def read(self, text):
        text = re.sub(r"//[^\n]*", " ", text)
        text = re.sub(r"\\\n", " ", text)
        text = re.sub(r"^[ \t]*#[^\n]*", " ", text, flags=re.M)
        text = re.sub(r"\s+", " ", text.replace('extern "C" {', " "))
        text = re.sub(r"namespace \w+ \{( ?(?:template[^;{]*\{[^}]*\}))* ?\}", " ", text)
        while text := text.strip(" }"):
            statement = re.match(r"(?:struct|union|enum)\b[^;{]*\{[^}]*\};|[^;]*;", text)
            if statement is None:
                self.strange.append(text[:80])
                return
            self.understand(statement[0])
            text = text[statement.end():]

    def understand(self, statement):
        if record := re.match(r"(?:struct|union) (\w+) \{(.*)\};", statement):
            fields = [re.search(r"(\w+)(?:\[\w+\])?$", field)[1] for field in split_body(record[2], ";")]
            self.structs[record[1]] = fields
        elif enum := re.match(r"enum \w+ : [\w: ]+\{(.*)\};", statement):
            self.constants += [row.split(" ")[0] for row in split_body(enum[1], ",")]
        elif constant := re.match(r"inline constexpr \w+ (\w+) =", statement):
            self.constants.append(constant[1])
        elif alias := re.match(r"using (\w+) =", statement):
            self.aliases.append(alias[1])
        elif function := re.match(r"(MAX\w+_EXPORT) [\w:* ]*?(\w+)\(", statement):
            self.functions[function[2]] = LIBRARIES[function[1]]
        elif not re.match(r"static_assert|struct \w+;", statement):
            self.strange.append(statement)


class Checks:
    def __init__(self, rows, headers):
        self.rows, self.headers = rows, headers
        self.lines, self.prototypes, self.faults = [], [], list(headers.strange)
        self.checked = dict.fromkeys(KINDS, 0)

    def row(self, kind, name):
        columns = self.rows[kind].get(name)
        if columns is None:
            self.faults.append(f"{name}: declared by us, but the rows know no such {kind}")
        else:
            self.checked[kind] += 1
        return columns

    def check(self, condition, what):
        self.lines.append(f'static_assert({condition}, "{what}");')

    def size(self, name):
        if columns := self.row("struct", name):
            self.check(f"sizeof({'row_long' if name == 'long' else name}) == {columns[0]}", name)

    def record(self, name):
        self.size(name)
        for field in self.headers.structs[name] if name not in STRUCTS_WITHOUT_FIELD_ROWS else []:
            if columns := self.row("field", f"{name}.{field}"):
                self.check(f"offsetof({name}, {field}) == {columns[0]} && sizeof({name}::{field}) == {columns[1]}",
                           f"{name}.{field}")

    def constant(self, name):
        if columns := self.row("const", name):
            self.check(f"static_cast<long long>({name}) == {columns[0]}", name)

    def function(self, name):
        if columns := self.row("func", name):
            if columns[0] != self.headers.functions[name]:
                self.faults.append(f"{name}: is exported by {columns[0]}")
            self.prototypes.append(re.sub(r"\blong\b", "row_long", columns[1]) + ";")
            self.check(f"std::is_same_v<decltype(&::{name}), decltype(&Rows::{name})>", name)

    def run(self):
        for name in BUILT_IN:
            self.size(name)
        for name in self.headers.aliases:
            if name not in ALIASES_WITHOUT_ROW:
                self.size(name)
        for name in self.headers.structs:
            self.record(name)
        for name in self.headers.constants:
            self.constant(name)
        for name in self.headers.functions:
            self.function(name)

        # The other way round: what we declare is declared whole.
        for name in self.rows["field"]:
            struct, field = name.split(".")
            if field not in self.headers.structs.get(struct, [field]):
                self.faults.append(f"{name}: is in the rows, but not in our struct")

    def text(self, command):
        counts = [f'    {{"{kind}", {self.checked[kind]}, {len(self.rows[kind])}}},' for kind in KINDS]
        return "\n".join([
            f"// Made by {command}",
            '#include "MaxAbiCounts.h"', '#include "z_dsp.h"', "",
            "#include <cstddef>", "#include <type_traits>", "",
            "// The `long` of the rows: the real one where Max runs.",
            "#if defined(_WIN32)", "using row_long = long;", "#else", "using row_long = max_long;", "#endif", "",
            "namespace Rows {", "using std::size_t;", *self.prototypes, "}  // namespace Rows", "", *self.lines, "",
            "const Tests::MaxAbiCount Tests::kMaxAbiCounts[4] = {", *counts, "};", ""])


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    checks = Checks(read_rows(sys.argv[1]), Headers(sys.argv[2]))
    checks.run()
    for fault in checks.faults:
        print(f"make_abi_checks.py: {fault}", file=sys.stderr)
    if checks.faults:
        sys.exit(1)
    with open(sys.argv[3], "w", encoding="utf-8") as f:
        f.write(checks.text("tools/make_abi_checks.py tests/data/max-abi.tsv maxapi"))


if __name__ == "__main__":
    main()
