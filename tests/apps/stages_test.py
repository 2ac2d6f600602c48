"""passband filter with small filters: medians, means, notches, DC blocking, derivatives and integrals in a chain."""

import math
import statistics
import unittest

from host_program import HostProgramTest, noise, read_csv, write_csv

RATE = 1000.0


class StagesTest(HostProgramTest):
    def filter(self, x, *arguments):
        write_csv(self.path("in.csv"), x)
        said = self.run_program("filter", "--in", "in.csv", "--rate", RATE, "--out", "out.csv", "--block", 37, *arguments)
        return read_csv(self.path("out.csv"))[0], said

    def tone(self, f, count=4000):
        return [math.sin(2 * math.pi * f * n / RATE) for n in range(count)]

    def test_medians_and_means_of_the_last_samples(self):
        x = noise(300)
        early = [x[0]] * 4 + x  # before the first sample its value stands
        medians = [statistics.median(early[n:n + 5]) for n in range(len(x))]
        y, said = self.filter(x, "--median", 5)
        self.assertEqual(y, medians)
        self.assertIn("small filters, median 5, double precision", said.replace("median 5\n", "median 5, double precision\n"))
        y, _ = self.filter(x, "--average", 8)
        self.assert_close(y, [math.fsum(x[max(n - 7, 0):n + 1]) / 8 for n in range(len(x))], 1e-15)
        # The order on the command line is the order of the filters, and one may stand there twice.
        y, _ = self.filter(x, "--average", 2, "--median", 3, "--average", 4)
        a = [(x[n] + (x[n - 1] if n else 0)) / 2 for n in range(len(x))]
        b = [statistics.median(([a[0]] * 2 + a)[n:n + 3]) for n in range(len(x))]
        self.assert_close(y, [math.fsum(b[max(n - 3, 0):n + 1]) / 4 for n in range(len(x))], 1e-15)

    def test_notch_and_dc(self):
        y, _ = self.filter(self.tone(50), "--notch", "50,2")
        self.assertLess(max(map(abs, y[3000:])), 1e-6)
        for f in [5, 400]:
            y, _ = self.filter(self.tone(f), "--notch", "50,2")
            self.assertAlmostEqual(math.sqrt(sum(v * v for v in y[3000:]) / 500), 1, delta=0.01)
        y, _ = self.filter([1 + x for x in self.tone(100)], "--dc", 1)
        self.assertAlmostEqual(sum(y[3000:]) / 1000, 0, delta=1e-3)
        self.assertAlmostEqual(math.sqrt(sum(v * v for v in y[3000:]) / 500), 1, delta=0.01)

    def test_derivatives_and_integrals(self):
        y, _ = self.filter([(n / RATE) ** 2 for n in range(100)], "--differentiate")
        self.assert_close(y[2:], [2 * (n - 1) / RATE for n in range(2, 100)], 1e-12)
        y, _ = self.filter([1.0] * 100, "--integrate")
        self.assert_close(y[2:], [y[2] + (n - 2) / RATE for n in range(2, 100)], 1e-12)

    def test_behind_another_filter(self):
        x = noise(500)
        alone, _ = self.filter(x, "--type", "lowpass", "--edges", "100,200")
        y, said = self.filter(x, "--type", "lowpass", "--edges", "100,200", "--median", 3)
        self.assertEqual(y, [statistics.median(([alone[0]] * 2 + alone)[n:n + 3]) for n in range(len(x))])
        self.assertIn("lowpass, kaiser", said)
        self.run_program("filter", "--in", "in.csv", "--rate", RATE, "--out", "s.csv", "--precision", "single", "--median", 3)
        self.assert_close(read_csv(self.path("s.csv"))[0], [statistics.median(([x[0]] * 2 + x)[n:n + 3])
                                                            for n in range(len(x))], 2.0 ** -24)

    def test_what_cannot_be(self):
        write_csv(self.path("in.csv"), [0.0] * 10)
        call = ["filter", "--in", "in.csv", "--out", "out.csv"]
        for arguments, reason in [(["--median", 0], "0 is not a number of samples"), (["--average", 2.5], "2.5 is not"),
                                  (["--median", "x"], "'x' is not a number"), (["--notch", 50], "--rate is required for --notch"),
                                  (["--rate", 100, "--notch", 50], "50 Hz is not between 0 and 50 Hz"),
                                  (["--rate", 100, "--notch", "20,0"], "0 Hz is no width"),
                                  (["--rate", 100, "--dc", 0], "0 Hz is no bandwidth"), ([], "a filter is required"),
                                  (["--median", 3, "--align"], "--align and --zero-phase go with"),
                                  (["--median", 3, "--down", 2], "--up and --down go with FIR")]:
            with self.subTest(arguments=arguments):
                self.assert_refused([*call, *arguments], reason)


if __name__ == "__main__":
    unittest.main()
