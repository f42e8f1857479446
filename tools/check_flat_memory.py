#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes and frees objects by the thousand while audio runs: the memory in use must not grow.

    check_flat_memory.py "HOST" COUNT "BOX TEXT"...

The peak of a run that makes COUNT objects is compared with that of one which makes few and sends a
message instead of the others. Ends with "N passed, M failed".
"""
import os
import shlex
import subprocess
import sys
import tempfile

VECTOR = 16
RATE = 48000
FEW = 500  # objects after which every pool has its size
ALLOWED_KIB = 512


def peak_kib(host, box, number_made, count):
    """Peak memory of a program that makes objects first and then sends messages, a vector each."""
    statements = ["host remake"] * number_made + ["clear      "] * (count - number_made)
    lines = [f"object {box}"] + [f"at {n * VECTOR / RATE:.6f} {text}" for n, text in enumerate(statements)]
    with tempfile.TemporaryDirectory() as folder:
        script, console = os.path.join(folder, "script.txt"), os.path.join(folder, "console.txt")
        with open(script, "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        with open(console, "w", encoding="utf-8") as out:
            run = subprocess.Popen([*host, "--quiet", "--rate", str(RATE), "--vector", str(VECTOR), "--duration",
                                    f"{(count + 1) * VECTOR / RATE:.6f}", script], stdout=out, stderr=out)
            _, status, usage = os.wait4(run.pid, 0)
            run.returncode = os.waitstatus_to_exitcode(status)
        with open(console, encoding="utf-8") as said:
            text = said.read(200)
    if run.returncode or text:
        raise RuntimeError(f"exit status {run.returncode}, {text}")
    return usage.ru_maxrss


def main():
    host, count, boxes = shlex.split(sys.argv[1]), int(sys.argv[2]), sys.argv[3:]
    passed = failed = 0
    for box in boxes:
        try:
            growth = peak_kib(host, box, count, count) - peak_kib(host, box, min(FEW, count), count)
            good, why = growth <= ALLOWED_KIB, f"{growth} KiB"
        except RuntimeError as failure:
            good, why = False, str(failure)
        passed += good
        failed += not good
        print(f"{'ok  ' if good else 'FAIL'} {count} of {box}: {why}")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed or not passed else 0


if __name__ == "__main__":
    sys.exit(main())
