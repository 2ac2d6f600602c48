"""passband design fir by every method, response and zoom with masks: against closed forms and direct sums."""

import cmath
import json
import math
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from host_program import HostProgramTest, read_csv, write_csv

RATE = 8000.0


def spectrum(taps, f):
    return sum(h * cmath.exp(-2j * math.pi * f * n / RATE) for n, h in enumerate(taps))


def decibels(value):
    return 20 * math.log10(abs(value))


class ResponseTest(HostProgramTest):
    def design(self, *arguments):
        """The taps and the record of a design, and what was said on standard error."""
        run = self.call("design", "fir", *arguments, "--rate", RATE, "--format", "json")
        self.assertEqual(run.returncode, 0, run.stderr)
        record = json.loads(run.stdout)
        return record["taps"], record, run.stderr

    def table(self, *arguments):
        text = self.run_program("response", *arguments)
        lines = text.split()
        self.assertEqual(lines[0], "frequency_hz,gain_db,phase_deg,delay_s")
        return [tuple(map(float, line.split(","))) for line in lines[1:]]

    def test_remez_reaches_the_deviation_it_tells(self):
        taps, record, said = self.design("--method", "remez", "--type", "bandpass", "--edges", "800,1000,2000,2300",
                                         "--attenuation", 50, "--odd", "--weights", "1,2,1")
        self.assertEqual(len(taps) % 2, 1)
        self.assertLessEqual(record["deviation"], record["ripple"])
        worst = 0
        for k in range(4001):
            f = k * RATE / 8000
            gain = abs(spectrum(taps, f))
            if f <= 800 or f >= 2300:
                worst = max(worst, gain)
            elif 1000 <= f <= 2000:
                worst = max(worst, 2 * abs(gain - 1))
        self.assertAlmostEqual(worst / record["deviation"], 1.02, delta=0.025)  # between the points of its grid
        self.assertIn(f"{len(taps)} taps, deviation {record['deviation']:.6g}", said)
        self.assertIn(f"{record['iterations']} iterations", said)
        self.assertNotIn("warning", said)
        for name, symmetry in [("hilbert3", -1), ("integrator4", -1), ("double-differentiator4", -1)]:
            length = 30 if name.endswith("4") else 31
            taps, _, _ = self.design("--method", "remez", "--type", name, "--edges", "400,3600", "--length", length)
            self.assertEqual(taps, [symmetry * h for h in reversed(taps)])

    def test_remez_warns_of_a_response_that_rises_where_nothing_was_asked(self):
        _, _, said = self.design("--method", "remez", "--type", "bandpass", "--edges", "300,1200,1300,1400", "--length", 61)
        self.assertIn("warning: between 300.0 and 1200.0 Hz, where nothing was asked of it", said.replace("300 and 1200", "300.0 and 1200.0"))

    def test_fractional_delay(self):
        for fraction in [0, 0.3, 1]:
            taps, record, _ = self.design("--method", "fractional", "--type", "lowpass", "--edges", "1500,2500",
                                          "--fraction", fraction)
            delay = (len(taps) - 1) / 2 - 1 + fraction
            self.assertAlmostEqual(record["delay_samples"], delay)
            for f in [100, 700, 1400]:
                turn = cmath.exp(2j * math.pi * f * delay / RATE)
                self.assertLess(abs(spectrum(taps, f) * turn - 1), 2e-3)

    def test_savitzky_golay(self):
        # The table of Savitzky and Golay, 1964, and slopes of a parabola.
        taps, _, _ = self.design("--method", "savgol", "--length", 5, "--order", 2)
        self.assert_close(taps, [x / 35 for x in [-3, 12, 17, 12, -3]], 1e-15)
        taps, _, _ = self.design("--method", "savgol", "--length", 7, "--order", 3, "--derivative", 1)
        parabola = [(n / RATE) ** 2 for n in range(20)]
        slope = sum(h * parabola[12 - n] for n, h in enumerate(taps))
        self.assertAlmostEqual(slope * RATE / (2 * 9), 1, delta=1e-9)

    def test_inverse_filter_makes_up_for_gains(self):
        Path(self.path("gains.csv")).write_text("0,0\n1000,6\n3000,-6\n4000,-3\n")
        for invert, sign in [([], 1), (["--invert"], -1)]:
            taps, _, _ = self.design("--method", "inverse", "--amplitude", "gains.csv", "--length", 401, *invert)
            for f, gain in [(500, 20 * math.log10((1 + 10 ** (6 * sign / 20)) / 2)), (3000, -6 * sign), (3500, None)]:
                if gain is not None:
                    self.assertAlmostEqual(decibels(spectrum(taps, f)), gain, delta=0.1)

    def test_coloured_noise_falls_by_its_slope(self):
        taps, _, _ = self.design("--method", "noise", "--slope", 10, "--edges", 100)
        fall = decibels(spectrum(taps, 300)) - decibels(spectrum(taps, 3000))
        self.assertAlmostEqual(fall, 10, delta=0.1)

    def test_response_of_taps_and_sections(self):
        taps = [0.1, 0.5, -0.2, 0.05]
        Path(self.path("taps.csv")).write_text("tap\n" + "\n".join(map(str, taps)) + "\n")
        rows = self.table("--taps", "taps.csv", "--rate", RATE, "--points", 16)
        self.assertEqual([row[0] for row in rows], [250.0 * k for k in range(17)])
        for f, gain, degrees, delay in rows:
            value = spectrum(taps, f)
            self.assertAlmostEqual(gain, decibels(value), delta=1e-9)
            self.assertAlmostEqual(cmath.exp(1j * math.radians(degrees)) * abs(value), value, delta=1e-9)
            expected = (spectrum([n * h for n, h in enumerate(taps)], f) / value).real
            self.assertAlmostEqual(delay * RATE, expected, delta=1e-9)
        self.run_program("design", "iir", "--family", "butterworth", "--type", "lowpass", "--order", 5, "--edges", 1000,
                         "--rate", RATE, "--out", "sections.json")
        rows = self.table("--sections", "sections.json", "--points", 8)
        self.assertAlmostEqual(rows[2][1], 10 * math.log10(0.5), delta=1e-9)
        self.assertAlmostEqual(rows[2][2], -225, delta=1e-6)
        # |H|^2 = 1 / (1 + (tan(pi f / rate) / tan(pi fc / rate))^10)
        for f, gain, _, _ in rows[:-1]:
            ratio = math.tan(math.pi * f / RATE) / math.tan(math.pi * 1000 / RATE)
            self.assertAlmostEqual(gain, -10 * math.log10(1 + ratio ** 10), delta=1e-7)

    def test_masks_are_drawn_and_checked(self):
        self.run_program("design", "iir", "--family", "butterworth", "--type", "lowpass", "--order", 5, "--edges", 1000,
                         "--rate", RATE, "--out", "sections.json")
        arguments = ["response", "--sections", "sections.json", "--out", "r.csv", "--mask", "mask.csv"]
        Path(self.path("mask.csv")).write_text("0,500,-0.1,0\n2000,4000,-inf,-30\n")
        self.run_program(*arguments, "--plot", "p.svg")
        text = " ".join(ElementTree.parse(self.path("p.svg")).getroot().itertext())
        for words in ["Magnitude", "mask", "Phase in degrees", "Delay in ms"]:
            self.assertIn(words, text)
        # An end of a stretch that lies between the points of the table counts.
        edge = 1000.0001
        Path(self.path("mask.csv")).write_text(f"0,{edge},-3.0,inf\n")
        run = self.call(*arguments)
        self.assertEqual(run.returncode, 1)
        level = -10 * math.log10(1 + (math.tan(math.pi * edge / RATE) / math.tan(math.pi / 8)) ** 10)
        self.assertEqual(run.stderr, f"passband: the mask is left by {-3 - level:.3g} dB: {level:.6g} dB at {edge:.8g} Hz, "
                         "below -3 dB\n")
        self.assertTrue(Path(self.path("r.csv")).exists())
        Path(self.path("mask.csv")).write_text("3000,4000,-inf,-60\n")
        run = self.call("design", "fir", "--type", "lowpass", "--edges", "1000,2500", "--attenuation", 40, "--rate", RATE,
                        "--mask", "mask.csv", "--out", "t.csv", "--plot", "t.svg")
        self.assertEqual(run.returncode, 1)
        self.assertIn("above -60 dB", run.stderr)

    def test_zoom_finds_what_lies_close_together(self):
        tones = [(440.3, 0.5), (441.1, 0.1)]
        x = [sum(a * math.sin(2 * math.pi * f * n / RATE + 1) for f, a in tones) for n in range(65536)]
        write_csv(self.path("in.csv"), [0.7] * len(x), x)
        arguments = ["zoom", "--in", "in.csv", "--rate", RATE, "--channel", 2, "--from", 439, "--to", 443, "--points", 401,
                     "--window", "blackman-harris"]
        self.run_program(*arguments, "--out", "z.csv", "--plot", "z.svg")
        frequencies, levels = read_csv(self.path("z.csv"), header=True)
        self.assertEqual((frequencies[0], frequencies[-1], len(frequencies)), (439, 443, 401))
        for f, amplitude in tones:
            k = round((f - 439) * 100)
            self.assertEqual(levels[k], max(levels[k - 20:k + 21]))
            self.assertAlmostEqual(levels[k], decibels(amplitude), delta=0.01)
        run = self.call(*arguments, "--start", 1, "--duration", 2, "--out", "z.csv")
        self.assertIn("dBFS at 440.", run.stderr)
        Path(self.path("mask.csv")).write_text("441,441.2,-inf,-30\n500,600,-inf,-300\n")
        run = self.call(*arguments, "--mask", "mask.csv", "--out", "z.csv")
        self.assertEqual(run.returncode, 1)
        self.assertIn("at 441.1 Hz, above -30 dB", run.stderr)

    def test_what_cannot_be(self):
        low = ["design", "fir", "--rate", 8000, "--type", "lowpass", "--edges", "1000,1200"]
        remez = [*low, "--method", "remez"]
        rate = ["design", "fir", "--rate", 8000]
        write_csv(self.path("in.csv"), [0.0] * 100)
        zoom = ["zoom", "--in", "in.csv", "--rate", 8000, "--from", 10]
        files = {"three.csv": "0,1,2\n1,2,3\n", "down.csv": "0,0\n100,0\n50,0\n4000,0\n", "short.csv": "0,0\n100,0\n",
                 "mask.csv": "0,100,0,1\n", "upside.csv": "0,100,1,0\n", "back.csv": "100,0,0,1\n", "t.csv": "tap\n1\n"}
        for name, text in files.items():
            Path(self.path(name)).write_text(text)
        inverse = [*rate, "--method", "inverse", "--length", 11, "--amplitude"]
        cases = [
            ([*low, "--fraction", 0.5], "--fraction goes with --method fractional, not with kaiser"),
            ([*remez, "--length", 2], "2 is not between 3 and 10000"),
            ([*remez, "--length", 31, "--attenuation", 60], "--length, or --ripple or --attenuation; not both"),
            ([*remez, "--length", 31, "--weights", "1,2,3"], "a lowpass has 2 bands; 3 weights given"),
            ([*remez, "--length", 31, "--weights", "1,0"], "0 is not a positive weight"),
            ([*rate, "--method", "remez", "--type", "highpass", "--edges", "1000,1200", "--length", 30], "an odd number"),
            ([*rate, "--type", "integrator3", "--edges", "10,20"], "designed by --method remez"),
            ([*low, "--method", "fractional"], "--fraction is required"),
            ([*low, "--method", "fractional", "--fraction", 1.5], "1.5 is not between 0 and 1"),
            ([*rate, "--method", "fractional", "--fraction", 0.5, "--type", "highpass", "--edges", "100,900"],
             "whole samples only"),
            ([*rate, "--method", "savgol", "--length", 4, "--order", 2], "it must be odd"),
            ([*rate, "--method", "savgol", "--length", 5, "--order", 5], "5 is not between 0 and 4"),
            ([*rate, "--method", "savgol", "--length", 5, "--order", 2, "--derivative", 3], "--derivative: 3"),
            ([*inverse, "three.csv"], "3 found"), ([*inverse, "down.csv"], "must ascend"),
            ([*inverse, "short.csv"], "must reach from 0 to 4000 Hz"),
            ([*rate, "--method", "noise", "--edges", 100], "--slope is required"),
            ([*rate, "--method", "noise", "--edges", 100, "--slope", 0], "is no slope"),
            ([*rate, "--method", "noise", "--edges", 4000, "--slope", 10], "below half the rate"),
            (["response"], "--taps FILE or --sections FILE"), (["response", "--taps", "t.csv"], "--rate is required"),
            (["response", "--taps", "t.csv", "--rate", 8, "--points", 0], "0 is not between 1"),
            (["response", "--taps", "t.csv", "--rate", 8, "--mask", "three.csv"], "a mask has 4 columns"),
            (["response", "--taps", "t.csv", "--rate", 8, "--mask", "upside.csv"], "nothing lies between 1 and 0 dB"),
            (["response", "--taps", "t.csv", "--rate", 8, "--mask", "back.csv"], "no stretch of frequencies"),
            ([*zoom, "--to", 5], "must ascend"), ([*zoom, "--to", 5000], "above 4000 Hz"),
            ([*zoom, "--to", 50, "--points", 1], "1 is not between 2"), ([*zoom, "--to", 50, "--channel", 2], "not 2"),
            ([*zoom, "--to", 50, "--start", 5], "holds no samples from 5 s on"),
            ([*zoom, "--to", 50, "--duration", -1], "is no stretch"), ([*zoom, "--to", 50, "--window", "round"], "not known")]
        for arguments, reason in cases:
            with self.subTest(arguments=arguments):
                self.assert_refused(arguments, reason)


if __name__ == "__main__":
    unittest.main()
