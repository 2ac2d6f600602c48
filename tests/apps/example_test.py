"""The examples run, and print what the literature and their filters promise."""

import math
import os
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

EXAMPLES = Path(os.environ.get("PASSBAND_EXAMPLES", "."))


def output_of(name, *arguments):
    return subprocess.run([EXAMPLES / f"example_{name}", *arguments], check=True, capture_output=True, text=True).stdout.split("\n")


class ExampleTest(unittest.TestCase):
    def test_window_table_agrees_with_the_published_one(self):
        # F. J. Harris, Proceedings of the IEEE 66, 1978, table 1: noise bandwidth in bins, scalloping loss and highest
        # side lobe in dB, as printed there.
        published = {"Rectangular": (1.00, 3.92, -13), "Bartlett": (1.33, 1.82, -27), "Hanning": (1.50, 1.42, -32),
                     "Hamming": (1.36, 1.78, -43), "Blackman": (1.73, 1.10, -58)}
        lines = [line for line in output_of("window_table")[1:] if line]
        rows = {line[:16].strip(): [float(x) for x in line[16:].split()] for line in lines}
        self.assertEqual(len(rows), 11)  # kaiser stands in it twice
        for name, (noise_bins, scallop, lobe) in published.items():
            with self.subTest(window=name):
                self.assertAlmostEqual(rows[name][2], noise_bins, delta=0.03)
                self.assertAlmostEqual(rows[name][3], scallop, delta=0.06)
                self.assertAlmostEqual(rows[name][4], lobe, delta=1)

    def test_stream_passes_one_tone_and_stops_the_other(self):
        lines = output_of("design_and_stream")
        levels = {line.split()[0]: float(line.split()[-2]) for line in lines if " dB" in line}
        self.assertAlmostEqual(levels["1000"], 0, delta=0.01)
        self.assertLess(levels["5000"], -59)

    def test_iir_stream_has_the_response_of_a_butterworth_filter(self):
        first, *levels = [line for line in output_of("iir_stream") if line]
        order, cutoff_hz, sections = [float(text) for text in re.findall(r"\d+\.?\d*", first)]
        # N = ceil(log10(Gs / Gp) / (2 log10(WA))) with the edges warped by the bilinear transform; at 120 Hz exactly 60 dB.
        stop, passing = math.tan(math.pi * 120 / 1000), math.tan(math.pi * 60 / 1000)
        gs, gp = 10 ** 6 - 1, 10 ** 0.1 - 1
        expected = math.ceil(math.log10(gs / gp) / (2 * math.log10(stop / passing)))
        self.assertEqual((order, sections), (expected, (expected + 1) // 2))
        warped = stop / gs ** (1 / (2 * expected))
        self.assertAlmostEqual(cutoff_hz, 1000 / math.pi * math.atan(warped), delta=1e-6)
        for line in levels:
            frequency, level = float(line.split()[0]), float(line.split()[-2])
            ratio = math.tan(math.pi * frequency / 1000) / warped
            self.assertAlmostEqual(level, -10 * math.log10(1 + ratio ** (2 * expected)), delta=0.0011)

    def test_ring_buffer_loses_nothing(self):
        first, second, *_ = output_of("ring_buffer")
        windows = (200 * 441 - 1024) // 512 + 1
        self.assertEqual([int(x) for x in re.findall(r"\d+", first)], [200, 441, windows, 1024, 200 * 441 - 512 * windows])
        lowest, highest = [float(x) for x in re.findall(r"\d\.\d+", second)]
        self.assertAlmostEqual(lowest, 0.5, delta=1e-3)
        self.assertAlmostEqual(highest, 0.5, delta=1e-3)
        self.assertNotIn("lost", second)

    def test_pendulum_is_tracked_within_its_band(self):
        with tempfile.TemporaryDirectory() as directory:
            picture = Path(directory) / "pendulum.svg"
            camera, tracked, inside, *_ = output_of("pendulum", picture)
            paths = ElementTree.parse(picture).getroot().findall("{http://www.w3.org/2000/svg}path")
        number = lambda line: float(re.search(r"\d+\.\d+", line).group())
        self.assertAlmostEqual(number(camera), 0.15, delta=0.01)
        self.assertLess(number(tracked), number(camera) / 3)
        self.assertGreater(number(inside), 98)
        self.assertEqual(len(paths), 4)  # axes, band, two curves


if __name__ == "__main__":
    unittest.main()
