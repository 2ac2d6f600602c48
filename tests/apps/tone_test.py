"""passband tone: the samples against the formulas of the waves."""

import math
import unittest
from pathlib import Path

from host_program import HostProgramTest, read_csv, read_float_wav

RATE = 8000


class ToneTest(HostProgramTest):
    def tone(self, *arguments, duration=0.75):
        self.run_program("tone", *arguments, "--rate", RATE, "--duration", duration, "--out", "t.csv")
        return read_csv(self.path("t.csv"))[0]

    def test_sines_and_sums_of_them(self):
        x = self.tone("--freq", "440,1000.5", "--amplitude", 0.25, "--phase", 30)
        expected = [sum(0.25 * math.sin(2 * math.pi * f * n / RATE + math.pi / 6) for f in [440, 1000.5])
                    for n in range(6000)]
        self.assert_close(x, expected, 1e-12)
        self.run_program("tone", "--freq", 440, "--rate", RATE, "--subtype", "float", "--out", "t.wav")
        y = read_float_wav(self.path("t.wav"))
        self.assert_close(y, [0.5 * math.sin(2 * math.pi * 440 * n / RATE) for n in range(RATE)], 2.0 ** -25)

    def test_squares_are_sums_of_harmonics(self):
        x = self.tone("--freq", 300, "--shape", "square", "--amplitude", 0.1)
        expected = [sum(0.4 / math.pi * math.sin(2 * math.pi * h * 300 * n / RATE) / h for h in range(1, 14, 2))
                    for n in range(6000)]
        self.assert_close(x, expected, 1e-12)
        x = self.tone("--freq", 300, "--shape", "square", "--amplitude", 0.1, "--harmonics", 1)
        self.assert_close(x, [0.4 / math.pi * math.sin(2 * math.pi * 300 * n / RATE) for n in range(6000)], 1e-12)

    def test_triangles_rise_in_their_part_of_the_period(self):
        for rise in [0.5, 0.2]:
            x = self.tone("--freq", 50, "--shape", "triangle", "--amplitude", 1, "--rise", rise)
            for n, value in enumerate(x):
                place = n / RATE * 50 % 1
                fall = 1 - rise
                expected = 1 - 2 * place / fall if place < fall else -1 + 2 * (place - fall) / rise
                self.assertAlmostEqual(value, expected, delta=1e-9)

    def test_sweeps_go_on_without_a_jump(self):
        for shape in ["sine", "square", "triangle"]:
            x = self.tone("--freq", "100,150,233.3", "--sweep", "--shape", shape, "--harmonics", 1, "--amplitude", 1)
            steepest = 4 * 233.3 / RATE if shape == "triangle" else 2 * math.pi * 233.3 / RATE * 4 / math.pi
            for a, b in zip(x, x[1:]):
                self.assertLessEqual(abs(b - a), steepest * 1.0001)
        x = self.tone("--freq", "100,250", "--sweep", "--amplitude", 1, duration=1)
        phase = 2 * math.pi * 100 * 4000 / RATE
        self.assert_close(x[4000:], [math.sin(phase + 2 * math.pi * 250 * n / RATE) for n in range(4000)], 1e-11)

    def test_what_cannot_be(self):
        for arguments, reason in [(["--freq", 0], "0 Hz is not between 0 and 24000 Hz"), (["--freq", "nan"], "nan"),
                                  (["--freq", 24000], "not between"), (["--freq", 9, "--duration", 0], "0 s is no length"),
                                  (["--freq", 9, "--duration", "inf"], "no length"), (["--freq", 9, "--rate", 0], "--rate"),
                                  (["--freq", 9, "--amplitude", 0], "0 is not a positive"),
                                  (["--freq", 9, "--rise", 2], "2 is not between 0 and 1"),
                                  (["--freq", 9, "--shape", "round"], "round"), ([], "--freq")]:
            self.assert_refused(["tone", *arguments, "--out", "t.wav"], reason)
        self.assertFalse(Path(self.path("t.wav")).exists())


if __name__ == "__main__":
    unittest.main()
