#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Plants single faults in a copy of the project and asks the test program to find each of them.

    tools/mutate.py [--jobs N | --here] [--only WORD]... [--some N] [--limit SECONDS] [--storms]
    tools/mutate.py --check

The faults stand in tools/mutations.tsv, one a row: the file (its name alone), a text that stands
before the fault and nowhere else in the file ("-": none), the text that is replaced, what replaces
it, and a mark. The replaced text has to occur exactly once in the file, or once at least behind
the text before it, where the first one counts. The mark is "storm" for faults that no single
thread shows; they run only with --storms, against quilo-races under the thread sanitizer.

Every job has a clone of the last commit in build/mutate (or --folder), where it stays for the next
run, and builds there what a fault changes. With --here the one job works in this checkout and its
build/release, which is quick where both are up to date; nobody else may touch them meanwhile. A
fault is
  killed     when a test fails, the program dies, or it lasts longer than the limit; the tests of
             the fault's own room run first, faults in pictures meet pictures_test.py, too
  survived   when all tests pass
  not built  when the compiler refuses it: a mistake of the table
The last lines say the commit, the numbers and the share that was killed. Status 0: all rows could be
tried. --check compares the table with the checkout alone: does every row still find its place?
"""
import argparse
import concurrent.futures
import json
import os
import queue
import random
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
TABLE = ROOT / "tools/mutations.tsv"
PRODUCT = ("src", "libquilo/src", "libvelkdsp/src", "libsdif/src", "host", "tools/sofa2hrtf")
PROGRAMS = {"": "quilo-tests", "storm": "quilo-races"}
CONFIGURE = {
    "": ["-DCMAKE_CXX_FLAGS=-O1", "-DQUILO_BUILD_TESTS=ON"],
    "storm": ["-DCMAKE_CXX_FLAGS=-O1 -g1 -fsanitize=thread", "-DQUILO_BUILD_TESTS=OFF",
              "-DQUILO_BUILD_MODULE=OFF", "-DQUILO_BUILD_RACES=ON"],
}
# What a fault may well be guilty of without being refused for it.
NO_WARNINGS = "".join(f'#pragma GCC diagnostic ignored "-W{name}"\n' for name in (
    "unused-parameter", "unused-variable", "unused-but-set-variable", "unused-function", "empty-body",
    "conversion", "sign-conversion", "double-promotion", "return-type", "parentheses",
    "misleading-indentation"))


class Fault:
    def __init__(self, number, fields):
        self.number = number  # line of the table
        if len(fields) not in (4, 5):
            raise ValueError("needs 4 or 5 columns")
        self.file, before, self.pattern, self.replacement = fields[:4]
        self.before = "" if before == "-" else before
        self.mark = fields[4] if len(fields) == 5 else ""
        if self.mark not in PROGRAMS:
            raise ValueError(f'unknown mark "{self.mark}"')

    def __str__(self):
        return f"{self.file}: {self.pattern.strip()}  ->  {self.replacement.strip()}"

    def find(self, files):
        places = files.get(self.file, [])
        if len(places) != 1:
            raise ValueError(f"{len(places)} files have this name")
        return places[0]

    def plant(self, text):
        """The text with the fault in it."""
        start = 0
        if self.before:
            if text.count(self.before) != 1:
                raise ValueError(f'"{self.before}" occurs {text.count(self.before)} times')
            start = text.index(self.before) + len(self.before)
        found = text.count(self.pattern, start)
        if found == 0 or (found > 1 and not self.before):
            raise ValueError(f"occurs {found} times")
        at = text.index(self.pattern, start)
        return NO_WARNINGS + text[:at] + self.replacement + text[at + len(self.pattern):]


def read_table():
    """The faults, and the complaints about rows that are none."""
    faults, complaints = [], []
    for number, line in enumerate(TABLE.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        try:
            faults.append(Fault(number, line.split("\t")))
        except ValueError as complaint:
            complaints.append(f"{TABLE.name}:{number}: {complaint}")
    return faults, complaints


def product_files(root):
    files = {}
    for folder in PRODUCT:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".cpp", ".h"):
                files.setdefault(path.name, []).append(path)
    return files


def check(root, faults):
    """Those that do not find their place, each with a complaint."""
    files, complaints, seen = product_files(root), {}, set()
    for fault in faults:
        try:
            path = fault.find(files)
            planted = fault.plant(path.read_text(encoding="utf-8"))
            if planted in seen:
                raise ValueError("is in the table twice")
            seen.add(planted)
        except ValueError as complaint:
            complaints[fault] = f"{TABLE.name}:{fault.number}: {fault}: {complaint}"
    return complaints


def run(command, folder, limit=None):
    """(status, output); status None: it lasted too long."""
    process = subprocess.Popen(command, cwd=folder, text=True, errors="replace", start_new_session=True,
                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    try:
        output, _ = process.communicate(timeout=limit)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return None, ""


class Workshop:
    """A clone with its builds, or this checkout with its release build."""

    def __init__(self, folder, commit, marks, limit):
        self.folder, self.limit, self.report = folder, limit, folder / "build/tests.json"
        self.is_clone = folder != ROOT
        if self.is_clone:
            if not (folder / ".git").exists():
                self.must(["git", "clone", "--quiet", "--shared", "--no-checkout", str(ROOT), str(folder)], ROOT)
            self.must(["git", "fetch", "--quiet", "origin"])
            self.must(["git", "checkout", "--quiet", "--force", "--detach", commit])
        elif subprocess.check_output(["git", "status", "--porcelain", "-uno"], cwd=ROOT):
            sys.exit("--here wants a checkout without changes")
        self.files = product_files(folder)
        for mark in marks:
            self.must(["cmake", "-G", "Ninja", "-S", ".", "-B", self.build(mark),
                       *(CONFIGURE[mark] + ["-DCMAKE_BUILD_TYPE=None", "-DQUILO_BUILD_BENCHMARKS=OFF"]
                         if self.is_clone or mark else [])])
            self.must(self.make(mark))
            status, output = self.storm() if mark else self.test(f"--gtest_output=json:{self.report}")
            if status != 0:
                sys.exit(f"the tests do not pass without a fault:\n{output[-2000:]}")

    def must(self, command, folder=None):
        status, output = run(command, folder or self.folder)
        if status != 0:
            sys.exit(f"{' '.join(command)}:\n{output[-4000:]}")

    def build(self, mark):
        return "build/mutate" + mark if self.is_clone or mark else "build/release"

    def make(self, mark):
        return ["cmake", "--build", self.build(mark), "--parallel", "1", "--target", PROGRAMS[mark]]

    def test(self, *options):
        program = f"{self.build('')}/bin/{PROGRAMS['']}"
        return run([program, "--gtest_fail_fast", "--gtest_brief=1", *options], self.folder, self.limit)

    def storm(self):
        # Address-space randomisation of newer kernels is wider than this sanitizer's shadow.
        program = f"{self.build('storm')}/bin/{PROGRAMS['storm']}"
        return run(["setarch", os.uname().machine, "-R", program], self.folder, self.limit)

    def test_near_first(self, path):
        """The tests of the room that mirrors the one of the file, then the others."""
        suites = json.loads(self.report.read_text(encoding="utf-8"))["testsuites"]
        room = "tests/" + path.parent.relative_to(self.folder).as_posix().replace("/src", "")
        near = []
        while not near and "/" in room:
            near = [s["name"] + ".*" for s in suites if f"/{room}/" in s["testsuite"][0].get("file", "")]
            room = room.rpartition("/")[0]
        for filter_ in [":".join(near), "-" + ":".join(near)] if near else ["*"]:
            status, output = self.test("--gtest_filter=" + filter_)
            if status != 0:
                return status, output
        if path.parent == self.folder / "host/picture":
            return run([sys.executable, "tests/tools/pictures_test.py", f"{self.build('')}/bin/quilo-host"],
                       self.folder, self.limit)
        return status, output

    def attempt(self, fault):
        """(outcome, what found it)"""
        path = fault.find(self.files)
        text = path.read_text(encoding="utf-8")
        path.write_text(fault.plant(text), encoding="utf-8")
        try:
            status, output = run(self.make(fault.mark), self.folder)
            if status != 0:
                return "not built", next((line for line in output.splitlines() if " error: " in line), "")
            status, output = self.storm() if fault.mark else self.test_near_first(path)
        finally:
            path.write_text(text, encoding="utf-8")
        if status is None:
            return "killed", f"hangs for {self.limit} s"
        if status == 0:
            return "survived", ""
        return "killed", next((line.split("]")[1].split(",")[0].strip() for line in output.splitlines()
                               if "FAILED  ]" in line), f"died with status {status}")


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # the file in hand is restored
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true", help="look whether the rows find their places, no more")
    parser.add_argument("--jobs", type=int, default=1, help="clones at work side by side")
    parser.add_argument("--here", action="store_true", help="in this checkout and its build/release")
    parser.add_argument("--some", type=int, metavar="N", help="N rows, the same ones every time")
    parser.add_argument("--only", action="append", default=[], metavar="WORD", help="rows with this word in them")
    parser.add_argument("--limit", type=float, default=300, metavar="SECONDS", help="of the tests, for each fault")
    parser.add_argument("--storms", action="store_true", help="the rows that only quilo-races can find, too")
    parser.add_argument("--folder", type=Path, default=ROOT / "build/mutate", help="where the clones stand")
    options = parser.parse_args()

    faults, complaints = read_table()
    misplaced = check(ROOT, faults)
    complaints += misplaced.values()
    if options.check:
        print("\n".join(complaints) or f"{len(faults)} faults find their places")
        return 1 if complaints else 0

    print("\n".join(complaints), file=sys.stderr)
    faults = [fault for fault in faults if fault not in misplaced and (options.storms or not fault.mark)]
    if options.only:
        faults = [fault for fault in faults if any(word in str(fault) for word in options.only)]
    if options.some is not None:
        faults = random.Random(1).sample(faults, min(options.some, len(faults)))
    commit = subprocess.check_output(["git", "rev-parse", "HEAD"], cwd=ROOT, text=True).strip()
    marks = sorted({fault.mark for fault in faults})
    workshops, counts = queue.Queue(), {"killed": 0, "survived": 0, "not built": 0}
    folders = [ROOT] if options.here else [options.folder / f"job{number}" for number in range(options.jobs)]
    for folder in folders:
        workshops.put(Workshop(folder, commit, marks, options.limit))

    def attempt(fault):
        start, workshop = time.monotonic(), workshops.get()
        try:
            outcome, found = workshop.attempt(fault)
        finally:
            workshops.put(workshop)
        counts[outcome] += 1
        print(f"{outcome:9}  {time.monotonic() - start:4.0f} s  {fault}  {found}", flush=True)

    # By file: neighbours rebuild the same few objects.
    with concurrent.futures.ThreadPoolExecutor(len(folders)) as pool:
        list(pool.map(attempt, sorted(faults, key=lambda fault: fault.file)))
    tried = counts["killed"] + counts["survived"]
    print(f"{commit[:9]}: {tried} faults, {counts['killed']} killed, {counts['survived']} survived, "
          f"{counts['not built']} not built: {100 * counts['killed'] / max(tried, 1):.1f} % killed")
    return 1 if counts["not built"] or complaints else 0


if __name__ == "__main__":
    sys.exit(main())
