# SPDX-License-Identifier: MIT
"""Plays signals through the module, in quilo-host, and gives what comes out."""
import subprocess
import sys
import tempfile
import wave
from pathlib import Path

sys.dont_write_bytecode = True
from wav_samples import read_float_wav


def play(host, statements, frames, rate, channels=1, options=()):
    """Plays 16-bit samples through the object that a script makes.

    @param frames the samples as bytes, those of one moment side by side
    @return (number of outlets, their samples side by side in one array, the lines of the console)
    @raise CalledProcessError when the run fails or the object posts an error; standard error says why
    """
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        with wave.open(str(folder / "in.wav"), "wb") as f:
            f.setnchannels(channels)
            f.setsampwidth(2)
            f.setframerate(rate)
            f.writeframes(frames)
        (folder / "scene.txt").write_text("\n".join(statements) + "\n", encoding="utf-8")
        run = subprocess.run([host, "--quiet", "--strict", *options, "--in", folder / "in.wav", "--out", folder / "out.wav",
                              folder / "scene.txt"], capture_output=True, text=True)
        if run.returncode != 0:
            sys.stderr.write(run.stderr)
        run.check_returncode()
        outlets, _, samples = read_float_wav(folder / "out.wav")
        return outlets, samples, run.stdout.splitlines()
