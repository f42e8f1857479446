#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Shows tools/check_includes.py small trees with one fault each."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).resolve().parents[2] / "tools" / "check_includes.py"

TREE = {
    "libvelkdsp/src/text/Text.h": "",
    "libvelkdsp/src/math/Math.h": '#include "text/Text.h"\n#include <cmath>\n',
    "libvelkdsp/src/files/Files.h": '#include "math/Math.h"\n',
    "libquilo/src/laws/Law.h": '#include "math/Math.h"\n',
    "libquilo/src/pan/Pan.h": '#include "laws/Law.h"\n#include "files/Files.h"\n',
    "maxapi/ext.h": "",
    "src/max/Atoms.h": '#include "ext.h"\n#include "text/Text.h"\n',
    "src/Object.cpp": '#include "max/Atoms.h"\n#include "pan/Pan.h"\n',
    "host/HostPlatform.cpp": "#include <dlfcn.h>\n",
    "host/Host.cpp": '#include "ext.h"\n',
    "maxapi/ext_obex.h": "void object_free(void* x);\nvoid* gensym(const char* name);\n",
    "host/api/ApiSymbols.cpp": '#include "ext_obex.h"\n\nvoid* gensym(const char* name) { return nullptr; }\n',
    "host/api/ApiObjects.h": "",
    "host/api/ApiObjects.cpp": '#include "ApiObjects.h"\n\nvoid object_free(void* x) {\n    gensym("free");\n}\n',
    "tests/libquilo/PanTest.cpp": '#include "pan/Pan.h"\n#include <gtest/gtest.h>\n',
    "tests/src/ObjectTest.cpp": '#include "ext.h"\n',
}

FAULTS = (
    # file that gets it                  line                            what is said about it
    ("libvelkdsp/src/text/Text.h",       '#include "math/Math.h"',       "must not know"),
    ("libvelkdsp/src/math/Math.h",       '  #  include "Law.h"',         "nowhere"),
    ("libvelkdsp/src/files/Files.h",     '#include "../math/Math.h"',    "climbs"),
    ("libvelkdsp/src/files/Files.h",     "#include <unistd.h>",          "standard library"),
    ("libquilo/src/laws/Law.h",          '#include "text/Text.h"',       "must not know"),
    ("libquilo/src/pan/Pan.h",           '#include "ext.h"',             "must not know"),
    ("src/max/Atoms.h",                  '#include "pan/Pan.h"',         "must not know"),
    ("maxapi/ext.h",                     '#include "text/Text.h"',       "must not know"),
    ("host/Host.cpp",                    '#include "Object.cpp"',        "must not know"),
    ("host/Host.cpp",                    "#include <dlfcn.h>",           "standard library"),
    ("host/api/ApiSymbols.cpp",          '#include "ApiObjects.h"',      "stands above"),
    ("host/api/ApiSymbols.cpp",          "void F() { object_free(0); }", "defined above"),
    ("host/api/ApiUnknown.cpp",          "",                             "no place"),
    ("libvelkdsp/src/other/Other.h",     "",                             "is in no room"),
)


def check(extra_file=None, extra_line=""):
    """Status and output of the checker over TREE with one line more."""
    with tempfile.TemporaryDirectory() as folder:
        files = dict(TREE)
        if extra_file:
            files[extra_file] = files.get(extra_file, "") + extra_line + "\n"
        for name, text in files.items():
            path = Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        run = subprocess.run([sys.executable, CHECKER, folder], capture_output=True, text=True)
        return run.returncode, run.stdout


class CheckIncludes(unittest.TestCase):
    def test_accepts_rooms_that_look_down(self):
        self.assertEqual((0, f"{len(TREE)} files, 0 forbidden includes\n"), check())

    def test_names_every_kind_of_fault_with_file_and_line(self):
        for name, line, said in FAULTS:
            with self.subTest(name=name, line=line):
                status, output = check(name, line)
                self.assertEqual(1, status)
                number = TREE.get(name, "").count("\n") + 1
                self.assertTrue(output.startswith(f"{name}:{number}: "), output)
                self.assertIn(said, output.splitlines()[0])
                self.assertIn(" 1 forbidden", output)


if __name__ == "__main__":
    unittest.main()
