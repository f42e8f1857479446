#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Joins recordings into one mono WAV file, a short pause after each.

    join_recordings.py OUT.wav SECONDS IN.wav...

The inputs are 16-bit mono files of one rate; they repeat until SECONDS are filled.
"""
import sys
import wave

PAUSE_SECONDS = 0.05


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    out, seconds, inputs = sys.argv[1], float(sys.argv[2]), sys.argv[3:]
    rate, pieces = None, []
    for name in inputs:
        with wave.open(name, "rb") as f:
            if f.getnchannels() != 1 or f.getsampwidth() != 2 or (rate or f.getframerate()) != f.getframerate():
                sys.exit(f"{name}: not a 16-bit mono file at the rate of the others")
            rate = f.getframerate()
            pieces.append(f.readframes(f.getnframes()) + b"\0\0" * int(PAUSE_SECONDS * rate))
    wanted = int(seconds * rate) * 2
    joined = b"".join(pieces)
    joined = (joined * (wanted // len(joined) + 1))[:wanted]
    with wave.open(out, "wb") as f:
        f.setparams((1, 2, rate, 0, "NONE", ""))
        f.writeframes(joined)


if __name__ == "__main__":
    main()
