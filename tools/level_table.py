#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints the level of every channel of a 32-bit float WAV file over time, in dB.

    level_table.py FILE.wav [ROWS]

One line a time slice; the loudest channel of a slice is marked. Levels are relative to the loudest
channel of the whole file, so that a movement shows whatever the speech does.
"""
import math
import sys

from wav_samples import read_float_wav

FLOOR_DB = -60.0


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    rows = int(sys.argv[2]) if len(sys.argv) == 3 else 12
    try:
        channels, rate, samples = read_float_wav(sys.argv[1])
    except ValueError as fault:
        sys.exit(str(fault))
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
