# SPDX-License-Identifier: MIT
"""Reads what quilo-host writes: 32-bit float WAV files."""
import array
import struct


def read_float_wav(name):
    """(channels, rate, samples), the samples of a frame side by side; ValueError for another file."""
    with open(name, "rb") as f:
        data = f.read()
    if data[:4] not in (b"RIFF", b"RF64") or data[8:12] != b"WAVE":
        raise ValueError(f"{name}: not a WAV file")
    at, channels, rate = 12, 0, 0
    while at + 8 <= len(data):
        kind, size = data[at:at + 4], struct.unpack("<I", data[at + 4:at + 8])[0]
        body = data[at + 8:at + 8 + size]
        if kind == b"fmt ":
            tag, channels, rate = struct.unpack("<HHI", body[:8])
            if tag not in (3, 0xFFFE):
                raise ValueError(f"{name}: not 32-bit float")
        if kind == b"data":
            samples = array.array("f")
            samples.frombytes(body[:len(body) // (4 * channels) * 4 * channels])
            return channels, rate, samples
        at += 8 + size + (size & 1)
    raise ValueError(f"{name}: no data")
