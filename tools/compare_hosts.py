#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs scripts through two builds of quilo-host and compares what comes out.

    compare_hosts.py "HOST" "OTHER HOST" SCRIPT...

Console lines have to be equal, audio within 1e-6, under every instruction set that the machine has.
The input is noise from a fixed seed. Ends with "N passed, M failed".
"""
import array
import concurrent.futures
import os
import random
import shlex
import struct
import subprocess
import sys
import tempfile

TOLERANCE = 1e-6
RATE = 48000
NOISE_SECONDS = 2
NUM_INLETS = 4


def instruction_sets():
    sets = ["scalar"]
    with open("/proc/cpuinfo") as f:
        flags = next((line.split() for line in f if line.startswith("flags")), [])
    if "avx2" in flags and "fma" in flags:
        sets.append("avx2")
    if "avx512f" in flags:
        sets.append("avx512")
    return sets


def write_noise(path):
    noise = random.Random(20)
    samples = array.array("f", (noise.uniform(-0.5, 0.5) for _ in range(NOISE_SECONDS * RATE * NUM_INLETS)))
    data = samples.tobytes()
    with open(path, "wb") as f:
        f.write(struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 36 + len(data), b"WAVE", b"fmt ", 16, 3, NUM_INLETS,
                            RATE, RATE * NUM_INLETS * 4, NUM_INLETS * 4, 32, b"data", len(data)))
        f.write(data)


def samples_of(path):
    with open(path, "rb") as f:
        content = f.read()
    start = content.index(b"data") + 8
    samples = array.array("f")
    samples.frombytes(content[start:len(content) - (len(content) - start) % 4])
    return samples


def run(host, script, noise, kernels):
    with tempfile.TemporaryDirectory() as folder:
        return run_inside(folder, host, script, noise, kernels)


def run_inside(folder, host, script, noise, kernels):
    wave, console = os.path.join(folder, "out.wav"), os.path.join(folder, "console.txt")
    words = [os.path.abspath(word) if os.path.exists(word) else word for word in shlex.split(host)]
    command = words + ["--quiet", "--in", noise, "--out", wave,
                                   "--console", console, os.path.abspath(script)]
    # What scripts write stays in the folder.
    done = subprocess.run(command, cwd=folder, env=dict(os.environ, TAV_SIMD=kernels), stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
    if not os.path.exists(wave):
        return done.returncode, done.stderr, None
    with open(console, "rb") as f:
        return done.returncode, f.read().replace(b"\r\n", b"\n"), samples_of(wave)


def difference(one, other):
    """What tells two runs apart, or None."""
    if one[0] != other[0]:
        return f"exit status {one[0]} and {other[0]}: {other[1][-200:]!r}"
    if one[2] is None or other[2] is None:
        return "no audio"
    if one[1] != other[1]:
        lines = zip(one[1].splitlines() + [b""], other[1].splitlines() + [b""])
        return "console: %r and %r" % next(((a, b) for a, b in lines if a != b), ("shorter", "longer"))
    if len(one[2]) != len(other[2]):
        return f"{len(one[2])} and {len(other[2])} samples"
    worst = max((abs(a - b) for a, b in zip(one[2], other[2])), default=0.0)
    return None if worst <= TOLERANCE else f"audio differs by {worst:.3g}"


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    first, second, scripts = sys.argv[1], sys.argv[2], sys.argv[3:]
    passed = failed = 0
    cases = [(kernels, script) for kernels in instruction_sets() for script in scripts]
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        noise = os.path.join(folder, "noise.wav")
        write_noise(noise)
        faults = pool.map(lambda case: difference(*(run(host, case[1], noise, case[0]) for host in (first, second))), cases)
        for (kernels, script), fault in zip(cases, faults):
            passed, failed = passed + (fault is None), failed + (fault is not None)
            if fault:
                print(f"FAIL {script} ({kernels}): {fault}")
    print(f"{passed} passed, {failed} failed")
    return 0 if failed == 0 and passed else 1


if __name__ == "__main__":
    sys.exit(main())
