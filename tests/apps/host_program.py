"""What the tests of the host program share: running it, making its inputs, reading its outputs."""

import math
import os
import random
import struct
import subprocess
import tempfile
import unittest
import wave
from pathlib import Path

PROGRAM = os.environ.get("PASSBAND_PROGRAM", "passband")
EPS = 2.0 ** -52


def noise(count, seed=1):
    """Uniform numbers in [-0.5, 0.5), always the same for a seed."""
    source = random.Random(seed)
    return [source.random() - 0.5 for _ in range(count)]


def write_csv(path, *channels, header=None):
    rows = [",".join(repr(x) for x in row) for row in zip(*channels)]
    Path(path).write_text("\n".join(([header] if header else []) + rows) + "\n")


def read_csv(path, header=False):
    """The columns of a CSV file."""
    lines = Path(path).read_text().split()[1 if header else 0:]
    return [list(column) for column in zip(*([float(x) for x in line.split(",")] for line in lines))]


def write_pcm(path, frames, bits=16, rate=48000):
    """A wav file of integer samples; `frames` holds one tuple per frame."""
    with wave.open(str(path), "wb") as file:
        file.setnchannels(len(frames[0]))
        file.setsampwidth(bits // 8)
        file.setframerate(rate)
        offset = 128 if bits == 8 else 0  # 8-bit wav files are unsigned
        data = b"".join((x + offset).to_bytes(bits // 8, "little", signed=bits > 8) for frame in frames for x in frame)
        file.writeframes(data)


def read_pcm(path):
    with wave.open(str(path), "rb") as file:
        return file.getparams(), file.readframes(file.getnframes())


def read_float_wav(path):
    """The samples of a 32-bit float wav file, found by its chunks."""
    data = Path(path).read_bytes()
    assert data[:4] == b"RIFF" and data[8:12] == b"WAVE"
    place = 12
    while data[place:place + 4] != b"data":
        place += 8 + struct.unpack_from("<I", data, place + 4)[0]
    size = struct.unpack_from("<I", data, place + 4)[0]
    return [x[0] for x in struct.iter_unpack("<f", data[place + 8:place + 8 + size])]


def fir(taps, x):
    """y[n] = sum taps[k] x[n - k], each sum correctly rounded."""
    return [math.fsum(taps[k] * x[n - k] for k in range(min(len(taps), n + 1))) for n in range(len(x))]


class HostProgramTest(unittest.TestCase):
    """Each test works in a directory of its own; `self.path(name)` is a file in it."""

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)

    def path(self, name):
        return str(self.directory / name)

    def call(self, *arguments, **options):
        return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, cwd=self.directory,
                              stdin=subprocess.DEVNULL, timeout=300, **options)

    def call_into(self, output, *arguments):
        """Like `call`, with a file of the caller's as standard output."""
        return subprocess.run([PROGRAM, *map(str, arguments)], stdout=output, stderr=subprocess.PIPE, text=True,
                              cwd=self.directory, stdin=subprocess.DEVNULL, timeout=300)

    def run_program(self, *arguments, **options):
        """Runs the program, which must succeed, and returns what it printed."""
        result = self.call(*arguments, **options)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def assert_refused(self, arguments, reason, **options):
        """The program must fail with exit code 1 and say why in one line."""
        result = self.call(*arguments, **options)
        self.assertEqual(result.returncode, 1, (arguments, result))
        self.assertEqual(result.stdout, "")
        self.assertTrue(result.stderr.startswith("passband: "), result.stderr)
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertIn(reason, result.stderr)

    def assert_close(self, actual, expected, tolerance):
        self.assertEqual(len(actual), len(expected))
        for n, (a, e) in enumerate(zip(actual, expected)):
            self.assertLessEqual(abs(a - e), tolerance, f"element {n}: {a} instead of {e}")
