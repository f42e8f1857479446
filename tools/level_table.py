#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints the level of every channel of a 32-bit float WAV file over time, in dB.

    level_table.py FILE.wav [ROWS]

One line a time slice; the loudest channel of a slice is marked. Levels are relative to the loudest
channel of the whole file, so that a movement shows whatever the speech does.
"""
import array
import math
import struct
import sys

FLOOR_DB = -60.0


def read_float_wav(name):
    with open(name, "rb") as f:
        data = f.read()
    if data[:4] not in (b"RIFF", b"RF64") or data[8:12] != b"WAVE":
        sys.exit(f"{name}: not a WAV file")
    at, channels, rate = 12, 0, 0
    while at + 8 <= len(data):
        kind, size = data[at:at + 4], struct.unpack("<I", data[at + 4:at + 8])[0]
        body = data[at + 8:at + 8 + size]
        if kind == b"fmt ":
            tag, channels, rate = struct.unpack("<HHI", body[:8])
            if tag not in (3, 0xFFFE):
                sys.exit(f"{name}: not 32-bit float")
        if kind == b"data":
            samples = array.array("f")
            samples.frombytes(body[:len(body) // (4 * channels) * 4 * channels])
            return channels, rate, samples
        at += 8 + size + (size & 1)
    sys.exit(f"{name}: no data")


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    rows = int(sys.argv[2]) if len(sys.argv) == 3 else 12
    channels, rate, samples = read_float_wav(sys.argv[1])
    frames = len(samples) // channels
    step = max(1, frames // rows)
    table = []
    for start in range(0, frames - step + 1, step):
        block = samples[start * channels:(start + step) * channels]
        table.append((start / rate, [math.sqrt(sum(x * x for x in block[c::channels]) / step)
                                     for c in range(channels)]))
    top = max((level for _, levels in table for level in levels), default=0.0) or 1.0
    print("   time " + "".join(f"{'out ' + str(c + 1):>8}" for c in range(channels)))
    for time, levels in table:
        loudest = max(range(channels), key=lambda c: levels[c])
        cells = []
        for c, level in enumerate(levels):
            db = max(FLOOR_DB, 20 * math.log10(level / top)) if level > 0 else FLOOR_DB
            text = "." if db <= FLOOR_DB else f"{db:.0f}" + ("*" if c == loudest else "")
            cells.append(f"{text:>8}")
        print(f"{time:6.2f}s {''.join(cells)}")


if __name__ == "__main__":
    main()
