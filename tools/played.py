# SPDX-License-Identifier: MIT
"""Plays signals through the module, in quilo-host, and gives what comes out. Needs Debian's python3-numpy."""
import subprocess
import sys
import tempfile
import wave
from pathlib import Path

sys.dont_write_bytecode = True
from wav_samples import read_float_wav

import numpy as np


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


def answers(host, box, statements, places=(), inlets=None, rate=48000, frames=4800):
    """What every outlet answers to clicks, without glides: clicks x outlets x samples.

    @param places  where source 1 is at each click: a coordinate format and its values
    @param inlets  the inlet of each click, from 0; all the first one where None
    @param frames  from one click to the next; half of that is listened to
    """
    inlets = [0] * len(places) if inlets is None else inlets
    clicks = np.zeros((len(inlets), frames, max(inlets) + 1), dtype="<i2")
    clicks[np.arange(len(inlets)), frames // 2, inlets] = 16384
    script = [f"object quilo.pan~ {box}", "interpolationtime 0", *statements]
    script += [f"at {k * frames / rate:.6f} source 1 {place}" for k, place in enumerate(places)]
    outlets, samples, _ = play(host, script, clicks.tobytes(), rate, clicks.shape[2])
    heard = np.frombuffer(samples, dtype=np.float32)[:len(inlets) * frames * outlets]
    return 2.0 * heard.reshape(len(inlets), frames, outlets)[:, frames // 2:].transpose(0, 2, 1)


def spectrum(responses, hz, rate=48000):
    """The complex response at each frequency, in the place of the samples."""
    return responses @ np.exp(-2j * np.pi * np.outer(np.arange(responses.shape[-1]) / rate, hz))
