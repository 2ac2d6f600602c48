"""passband design fir: the taps against the closed forms of the window method."""

import json
import math
import unittest
import xml.etree.ElementTree as ElementTree
from math import cos, pi, sin

from host_program import EPS, HostProgramTest

RATE = 8000.0


def ideal(kind, f1, f2, x):
    """The ideal impulse response at x samples from its centre; cut-offs relative to half the rate."""
    if x == 0:
        return {"lowpass": f1, "highpass": 1 - f1, "bandpass": f2 - f1, "bandstop": 1 - (f2 - f1)}.get(kind, 0.0)
    if kind.startswith("hilbert"):
        return 2 * sin(pi * x / 2) ** 2 / (pi * x)
    if kind.startswith("differentiator"):
        return (cos(pi * x) / x - sin(pi * x) / (pi * x * x)) * RATE
    lower = sin(pi * f1 * x) / (pi * x)
    upper = sin(pi * f2 * x) / (pi * x)
    return {"lowpass": lower, "highpass": -lower, "bandpass": upper - lower, "bandstop": lower - upper}[kind]


def bessel_i0(x):
    term = total = 1.0
    k = 1
    while term > total * 1e-17:
        term *= (x / (2 * k)) ** 2
        total += term
        k += 1
    return total


def kaiser(beta):
    def value(n, last):
        return bessel_i0(beta * math.sqrt(max(0.0, 1 - (2 * n / last - 1) ** 2))) / bessel_i0(beta)
    return value


WINDOWS = {
    "rectangular": lambda n, last: 1.0,
    "hanning": lambda n, last: 0.5 - 0.5 * cos(2 * pi * n / last),
    "hamming": lambda n, last: 0.54 - 0.46 * cos(2 * pi * n / last),
    "blackman": lambda n, last: 0.42 - 0.5 * cos(2 * pi * n / last) + 0.08 * cos(4 * pi * n / last),
    "Blackman-Harris": lambda n, last: 0.42323 - 0.49755 * cos(2 * pi * n / last) + 0.07922 * cos(4 * pi * n / last),
    "flat-top": lambda n, last: 0.2810639 - 0.5208972 * cos(2 * pi * n / last) + 0.1980399 * cos(4 * pi * n / last),
}


def windowed(kind, cuts_hz, length, window, gain=1.0):
    f1, f2 = [2 * f / RATE for f in cuts_hz] + [0.0] * (2 - len(cuts_hz))
    return [gain * ideal(kind, f1, f2, n - (length - 1) / 2) * window(n, length - 1) for n in range(length)]


def magnitude(taps, frequency_hz):
    turn = 2 * pi * frequency_hz / RATE
    return math.hypot(math.fsum(h * cos(turn * n) for n, h in enumerate(taps)),
                      math.fsum(h * sin(turn * n) for n, h in enumerate(taps)))


class DesignTest(HostProgramTest):
    def design(self, *arguments):
        """Designs, and returns taps whose text has been checked to carry 17 digits."""
        lines = self.run_program("design", "fir", "--rate", RATE, *arguments).split()
        self.assertEqual(lines[0], "tap")
        for text in lines[1:]:
            self.assertEqual(text, f"{float(text):.17g}")
        return [float(text) for text in lines[1:]]

    def assert_taps(self, actual, expected, eps=EPS):
        # A few roundings of the largest term; a difference of two cancels to at most as much.
        self.assert_close(actual, expected, 16 * eps * max(map(abs, expected)))

    def test_window_method_is_the_ideal_response_times_the_window(self):
        kinds = [("lowpass", "1000", [1000], 40), ("lowpass", "900,1100", [1000], 41),
                 ("highpass", "1500", [1500], 41), ("bandpass", "1000,2000", [1000, 2000], 40),
                 ("bandstop", "900,1100,1900,2100", [1000, 2000], 41), ("hilbert3", None, [], 41),
                 ("hilbert4", None, [], 40), ("differentiator3", None, [], 41), ("differentiator4", None, [], 40)]
        for kind, edges, cuts, length in kinds:
            for name, window in WINDOWS.items():
                with self.subTest(kind=kind, edges=edges, window=name):
                    arguments = ["--method", "window", "--type", kind, "--length", length, "--window", name]
                    taps = self.design(*arguments, *(["--edges", edges] if edges else []))
                    # The terms of a cosine window cancel near its ends; Blackman's are written with alpha.
                    self.assert_taps(taps, windowed(kind, cuts, length, window))

    def test_window_parameter_gain_and_precision(self):
        arguments = ["--method", "window", "--type", "lowpass", "--length", 32, "--edges", "1000", "--gain", "2.5"]
        expected = windowed("lowpass", [1000], 32, kaiser(6.0), 2.5)
        expected[0] = expected[-1] = 0.0 if abs(expected[0]) < 1e-12 else expected[0]
        taps = self.design(*arguments, "--window", "kaiser", "--param", "6")
        self.assert_taps(taps[1:-1], expected[1:-1])
        single = self.design(*arguments, "--window", "kaiser", "--param", "6", "--precision", "single")
        self.assert_taps(single[1:-1], expected[1:-1], eps=2.0 ** -23)
        self.assertNotEqual(single, taps)

    def test_a_length_that_the_type_cannot_have_is_moved_and_told(self):
        cases = [("highpass", ["--edges", 1000], 10, 11), ("bandstop", ["--edges", "1000,2000"], 10, 11),
                 ("hilbert3", [], 10, 11), ("hilbert4", [], 9, 10)]
        for kind, edges, asked, made in cases:
            result = self.call("design", "fir", "--rate", RATE, "--method", "window", "--type", kind, "--length", asked,
                               *edges)
            self.assertEqual(len(result.stdout.split()) - 1, made)
            self.assertIn(f"a {kind} cannot have {asked} taps; it has {made}", result.stderr)

    def test_kaiser_method_follows_the_published_formulas(self):
        # J. F. Kaiser, "Nonrecursive digital filter design using the I0-sinh window function", ISCAS 1974.
        ripple = 10 ** (-70 / 20)
        length = round((70 - 8) / (2.285 * 2 * pi * 200 / RATE))
        expected = windowed("lowpass", [1100], length, kaiser(0.1102 * (70 - 8.7)))
        taps = self.design("--type", "lowpass", "--edges", "1000,1200", "--attenuation", 70)
        self.assert_taps(taps[1:-1], expected[1:-1])
        self.assertEqual(taps, self.design("--type", "lowpass", "--edges", "1000,1200", "--ripple", repr(ripple)))

    def test_kaiser_filters_keep_their_ripple(self):
        most = 10 ** (-58 / 20)  # asked for 60 dB; the length is an estimate, good to 2 dB
        cases = [("lowpass", [1000, 1200], [0, 700, 1000], [1200, 2000, 4000]),
                 ("highpass", [1000, 1200], [1200, 2000, 4000], [0, 700, 1000]),
                 ("bandpass", [500, 700, 1500, 1800], [700, 1100, 1500], [0, 500, 1800, 4000]),
                 ("bandstop", [500, 700, 1500, 1800], [0, 500, 1800, 4000], [700, 1100, 1500]),
                 ("hilbert3", [3800], [300, 2000, 3700], [0, 4000]), ("hilbert4", [3800], [300, 2000, 4000], [0])]
        for kind, edges, passed, stopped in cases:
            taps = self.design("--type", kind, "--edges", ",".join(map(str, edges)), "--attenuation", 60)
            for frequency in passed:
                self.assertAlmostEqual(magnitude(taps, frequency), 1, delta=most, msg=f"{kind} at {frequency} Hz")
            for frequency in stopped:
                self.assertLess(magnitude(taps, frequency), most, f"{kind} at {frequency} Hz")

    def test_odd_makes_the_length_odd(self):
        for attenuation in range(50, 70):
            taps = self.design("--type", "lowpass", "--edges", "1000,1500", "--attenuation", attenuation, "--odd")
            self.assertEqual(len(taps) % 2, 1)

    def test_json_holds_the_same_taps_and_how_they_came_about(self):
        arguments = ["--type", "bandpass", "--edges", "500,700,1500,1800", "--gain", 0.5]
        taps = self.design(*arguments)
        text = self.run_program("design", "fir", "--rate", RATE, *arguments, "--format", "json")
        document = json.loads(text)
        self.assertEqual(document["taps"], taps)
        for tap in taps:
            self.assertIn(f"    {tap:.17g}", text)
        facts = {"type": "bandpass", "method": "kaiser", "rate_hz": RATE, "edges_hz": [500, 700, 1500, 1800],
                 "gain": 0.5, "precision": "double", "length": len(taps), "delay_samples": (len(taps) - 1) / 2}
        self.assertEqual({key: document[key] for key in facts}, facts)
        self.assertAlmostEqual(document["attenuation_db"], 60)
        self.run_program("design", "fir", "--rate", RATE, *arguments, "--out", self.path("taps.json"))
        self.assertEqual((self.directory / "taps.json").read_text(), text)

    def test_plot_is_an_svg_with_axes_and_units(self):
        self.run_program("design", "fir", "--rate", RATE, "--type", "lowpass", "--edges", "1000,1200", "--plot",
                         self.path("a plot.svg"))
        root = ElementTree.parse(self.path("a plot.svg")).getroot()
        self.assertEqual(root.tag, "{http://www.w3.org/2000/svg}svg")
        text = " ".join(root.itertext())
        for words in ["Magnitude response: lowpass, kaiser", "Frequency in Hz", "Gain in dB", "4000", "-60"]:
            self.assertIn(words, text)

    def test_help_and_version(self):
        self.assertRegex(self.run_program("--version"), r"^passband \d+\.\d+\.\d+\n$")
        self.assertIn("--edges", self.run_program("design", "fir", "--help"))
        self.assertIn("plot-spectrum", self.run_program("--help"))


if __name__ == "__main__":
    unittest.main()
