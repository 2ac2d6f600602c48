"""passband info, levels and plot-spectrum against signals whose levels are known."""

import json
import math
import unittest
import xml.etree.ElementTree as ElementTree

from host_program import HostProgramTest, noise, write_csv, write_pcm

RATE = 8000


def tone(frequency_hz, amplitude, count=RATE):
    return [amplitude * math.sin(2 * math.pi * frequency_hz * n / RATE) for n in range(count)]


def decibels(mean_square):
    return 10 * math.log10(2 * mean_square)


class ReportTest(HostProgramTest):
    def levels(self, *arguments):
        text = self.run_program("levels", "--rate", RATE, "--format", "json", *arguments)
        return json.loads(text)["levels"]

    def test_levels_of_tones(self):
        x = [a + b for a, b in zip(tone(1000, 0.5), tone(3000, 0.05))]
        write_csv(self.path("x.csv"), x, tone(1000, 1.0))
        first, second = self.levels("--in", "x.csv", "--band", "500,2000")
        self.assertEqual([first["name"], second["name"]], ["x.csv, channel 1", "x.csv, channel 2"])
        # The tone starts and stops, which spreads a little of it over all frequencies.
        self.assertAlmostEqual(first["inside"], 20 * math.log10(0.5), delta=0.01)
        self.assertAlmostEqual(first["outside"], 20 * math.log10(0.05), delta=0.1)
        self.assertAlmostEqual(second["total"], 0, delta=1e-9)
        guarded, _ = self.levels("--in", "x.csv", "--band", "500,2000", "--guard", 1100)  # 3000 Hz is within the guard
        self.assertEqual((guarded["inside"], guarded["total"]), (first["inside"], first["total"]))
        self.assertLess(guarded["outside"], -50)

    def test_no_power_is_lost_between_the_bins(self):
        for count in [1, 63, 64, 65, 5000]:
            x = noise(count)
            write_csv(self.path("x.csv"), x)
            expected = decibels(math.fsum(sample * sample for sample in x) / count)
            for band in ["0,4000", "0,1000", "123.4,567.8"]:
                level, = self.levels("--in", "x.csv", "--band", band, "--resolution", 50)
                self.assertAlmostEqual(level["total"], expected, delta=1e-9)

    def test_white_noise_fills_a_band_by_its_width(self):
        x = noise(40000)
        write_csv(self.path("x.csv"), x)
        level, = self.levels("--in", "x.csv", "--band", "1000,2000")
        self.assertAlmostEqual(level["inside"], decibels(1 / 12 / 4), delta=0.3)

    def test_silence_has_no_level(self):
        write_csv(self.path("x.csv"), [0.0] * 100)
        level, = self.levels("--in", "x.csv", "--band", "500,2000")
        self.assertEqual([level["inside"], level["outside"], level["total"]], [None] * 3)

    def test_table_tells_levels_and_change(self):
        for name, amplitude in [("before.wav", 16384), ("after.wav", 8192)]:
            write_pcm(self.path(name), [(round(x),) for x in tone(1000, amplitude)], rate=RATE)
        lines = self.run_program("levels", "--in", "before.wav", "--in", "after.wav", "--band", "300,3400").split("\n")
        self.assertEqual(lines[0].split(), ["level", "in", "dBFS", "300-3400", "Hz", "outside", "total"])
        self.assertEqual([line.split()[0] for line in lines if line.startswith(("before", "after"))],
                         ["before.wav", "after.wav"])
        self.assertIn("-6.0", lines[2])
        change = next(line for line in lines if line.startswith("change"))
        self.assertEqual(change.split()[3], "-6.0")
        self.assertEqual(change.split()[5], "-6.0")

    def test_spectrum_is_an_svg_with_axes_units_and_names(self):
        names = ["it's <loud> & $clear.csv", "b.csv"]
        write_csv(self.path(names[0]), noise(3000), noise(3000, seed=2))
        write_csv(self.path(names[1]), [0.0] * 3000)
        self.run_program("plot-spectrum", "--in", names[0], "--in", names[1], "--rate", RATE, "--band", "300,3400",
                         "--out", "spectrum.svg")
        root = ElementTree.parse(self.path("spectrum.svg")).getroot()
        self.assertEqual(root.tag, "{http://www.w3.org/2000/svg}svg")
        text = " ".join(root.itertext())
        for words in ["Frequency in Hz", "Power density in dBFS per Hz", names[0] + ", mean of 2 channels", "b.csv",
                      "1000"]:
            self.assertIn(words, text)

    def test_info(self):
        write_pcm(self.path("x.wav"), [(1, 2, 3)] * 400, bits=24, rate=RATE)
        write_csv(self.path("x.csv"), noise(7), noise(7))
        self.assertEqual(self.run_program("info", "--in", "x.wav"),
                         "x.wav: 3 channels, 400 frames, 8000 Hz, 0.050 s, pcm24 samples\n")
        self.assertEqual(self.run_program("info", "--in", "x.csv"), "x.csv: 2 channels, 7 frames\n")
        for what, value in [("rate", "8000"), ("channels", "3"), ("frames", "400")]:
            self.assertEqual(self.run_program("info", "--in", "x.wav", "--only", what), value + "\n")


if __name__ == "__main__":
    unittest.main()
