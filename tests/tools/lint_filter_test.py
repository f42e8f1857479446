#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Shows that the folder in which the sources stand does not decide which headers the lint checks."""
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
FOLDERS = ("/home/someone/quilo", "/src/host", "/build/c++ (copy) [1]/src", "/host/a|b/$x^")
CHECKED = ("host/api/ApiFiles.h", "src/max/VelkMaxFiles.h", "libvelkdsp/src/math/VelkDspMatrix.h")
OTHERS = ("maxapi/ext.h", "tests/src/PanBox.h", "build/lint/generated/QuiloProject.h")


def header_filter(folder):
    """What CMake hands to clang-tidy for a checkout in `folder`."""
    with tempfile.NamedTemporaryFile("w", suffix=".cmake") as script:
        script.write(f'include("{TOP}/cmake/QuiloLint.cmake")\n'
                     f'quilo_lint_header_filter(filter [==[{folder}]==])\nmessage("${{filter}}")\n')
        script.flush()
        run = subprocess.run(["cmake", "-P", script.name], capture_output=True, text=True, check=True)
    return run.stderr.rstrip("\n")


class LintFilter(unittest.TestCase):
    def test_depends_on_the_room_alone(self):
        for folder in FOLDERS:
            pattern = re.compile(header_filter(folder))
            for header in CHECKED:
                self.assertTrue(pattern.search(f"{folder}/{header}"), (folder, header))
            for header in OTHERS:
                self.assertFalse(pattern.search(f"{folder}/{header}"), (folder, header))
            self.assertFalse(pattern.search("/usr/src/googletest/gtest.h"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
