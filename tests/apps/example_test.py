"""The examples run, and print what the literature and their filters promise."""

import os
import subprocess
import unittest
from pathlib import Path

EXAMPLES = Path(os.environ.get("PASSBAND_EXAMPLES", "."))


def output_of(name):
    return subprocess.run([EXAMPLES / f"example_{name}"], check=True, capture_output=True, text=True).stdout.split("\n")


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


if __name__ == "__main__":
    unittest.main()
