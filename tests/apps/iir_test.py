"""passband design iir, order and filter --sections: against closed forms, published designs and plain recursions."""

import cmath
import json
import math
import re
import shutil
import struct
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from host_program import EPS, HostProgramTest, noise, read_csv, read_float_wav, write_csv, write_pcm

RATE = 8000.0
TELEPHONE = ["--type", "bandpass", "--edges", "200,300,3400,3600", "--rate", RATE, "--ripple", 0.5,
             "--attenuation", 40]


def chebyshev(n, x):
    """|T_n(x)|"""
    return math.cosh(n * math.acosh(x)) if x > 1 else abs(math.cos(n * math.acos(x)))


def bessel(n, x):
    """|theta_n(0) / theta_n(j x)| of the reverse Bessel polynomial, normalised to the asymptote x^-n."""
    coefficients = [math.factorial(n + k) // (2 ** k * math.factorial(k) * math.factorial(n - k)) for k in range(n + 1)]
    s = 1j * x * coefficients[n] ** (1 / n)
    return abs(coefficients[n] / sum(c * s ** (n - k) for k, c in enumerate(coefficients)))


# |H| over the frequency of the analog lowpass, 1 at the cut-off, for --ripple 1 and --attenuation 40 where they are taken.
LOWPASS = {"butterworth": lambda n, x: (1 + x ** (2 * n)) ** -0.5,
           "chebyshev1": lambda n, x: (1 + (10 ** 0.1 - 1) * chebyshev(n, x) ** 2) ** -0.5,
           "chebyshev2": lambda n, x: (1 + (10 ** 4 - 1) / chebyshev(n, 1 / x) ** 2) ** -0.5 if x > 0 else 1.0,
           "bessel": bessel}
TAKES = {"chebyshev1": ["--ripple", 1], "chebyshev2": ["--attenuation", 40]}


def to_lowpass(kind, w, edges):
    """What the band mapping makes of the angular frequency w > 0."""
    if len(edges) == 1:
        return w / edges[0] if kind == "lowpass" else edges[0] / w
    ratio = abs(w * w - edges[0] * edges[1]) / (w * (edges[1] - edges[0]))
    return ratio if kind == "bandpass" else 1 / max(ratio, 1e-300)


def solve(matrix, right):
    """Gaussian elimination with partial pivoting."""
    rows = [list(row) + [value] for row, value in zip(matrix, right)]
    for k in range(len(rows)):
        best = max(range(k, len(rows)), key=lambda i: abs(rows[i][k]))
        rows[k], rows[best] = rows[best], rows[k]
        for i in range(k + 1, len(rows)):
            factor = rows[i][k] / rows[k][k]
            rows[i] = [a - factor * b for a, b in zip(rows[i], rows[k])]
    x = [0j] * len(rows)
    for k in reversed(range(len(rows))):
        x[k] = (rows[k][-1] - sum(rows[k][j] * x[j] for j in range(k + 1, len(rows)))) / rows[k][k]
    return x


def response(filter_, z):
    """H at z (or s), whatever the form of the JSON document."""
    if filter_["form"] == "sos":
        return math.prod((b0 + b1 / z + b2 / z ** 2) / (a0 + a1 / z + a2 / z ** 2)
                         for b0, b1, b2, a0, a1, a2 in filter_["sections"])
    if filter_["form"] == "zpk":
        top = math.prod([z - complex(*root) for root in filter_["zeros"]])
        return filter_["gain"] * top / math.prod([z - complex(*root) for root in filter_["poles"]])
    if filter_["form"] == "tf":
        top, bottom = (sum(c * z ** -n for n, c in enumerate(filter_[part])) for part in ["numerator", "denominator"])
        return top / bottom
    shifted = [[(z if i == j else 0) - a for j, a in enumerate(row)] for i, row in enumerate(filter_["A"])]
    return sum(c * x for c, x in zip(filter_["C"], solve(shifted, filter_["B"]))) + filter_["D"]


def decibels(filter_, frequency_hz):
    return 20 * math.log10(abs(response(filter_, cmath.exp(2j * math.pi * frequency_hz / filter_["rate_hz"]))))


class Cascade:
    """y[n] = b0 x[n] + s1, section after section, as textbooks write it."""

    def __init__(self, sections):
        self.sections = [[c / row[3] for c in row] for row in sections]
        self.state = [[0.0, 0.0] for _ in sections]

    def run(self, x):
        y = []
        for value in x:
            for (b0, b1, b2, _, a1, a2), s in zip(self.sections, self.state):
                out = b0 * value + s[0]
                s[0], s[1] = b1 * value - a1 * out + s[1], b2 * value - a2 * out
                value = out
            y.append(value)
        return y


class IirTest(HostProgramTest):
    def design(self, *arguments):
        return json.loads(self.run_program("design", "iir", *arguments, "--format", "json"))

    def sections_file(self, name="sections.csv", *arguments):
        self.run_program("design", "iir", "--family", "elliptic", *TELEPHONE, "--out", name, *arguments)
        return self.design("--family", "elliptic", *TELEPHONE)["sections"]

    def test_magnitude_follows_the_closed_form_of_its_family(self):
        bands = [("lowpass", [700]), ("highpass", [1500]), ("bandpass", [600, 1900]), ("bandstop", [900, 2300])]
        for family, magnitude in LOWPASS.items():
            for kind, edges in bands:
                for order in [1, 5, 12]:
                    arguments = ["--family", family, "--type", kind, "--order", order, *TAKES.get(family, [])]
                    if (family, kind, order % 2) == ("chebyshev1", "bandstop", 0):
                        continue  # scaled to 1 at zero frequency instead
                    with self.subTest(family=family, kind=kind, order=order):
                        edge_text = ",".join(map(str, edges))
                        digital = self.design(*arguments, "--rate", RATE, "--edges", edge_text)
                        analog = self.design(*arguments, "--analog", "--edges", edge_text)
                        warped = [math.tan(math.pi * f / RATE) for f in edges]
                        for f in [50 + 130 * n for n in range(30)]:
                            x = to_lowpass(kind, math.tan(math.pi * f / RATE), warped)
                            h = abs(response(digital, cmath.exp(2j * math.pi * f / RATE)))
                            # Sections are rounded to double, the response is evaluated in double.
                            self.assertAlmostEqual(h, magnitude(order, x), delta=1e-11 * max(1.0, h))
                            h = abs(response(analog, 1j * f))
                            expected = magnitude(order, to_lowpass(kind, f, edges))
                            self.assertAlmostEqual(h / expected, 1, delta=1e-11)

    def test_elliptic_ripples_are_equal_and_as_asked_for(self):
        filter_ = self.design("--family", "elliptic", *TELEPHONE)
        self.assertEqual((filter_["cutoffs_hz"], len(filter_["sections"])), ([300, 3400], filter_["order"]))
        passed = [decibels(filter_, 300 + 3100 * n / 5000) for n in range(5001)]
        stopped = [decibels(filter_, f) for f in [*range(1, 201), *range(3600, 4000)]]
        self.assertAlmostEqual(min(passed), -0.5, delta=1e-4)
        self.assertAlmostEqual(max(passed), 0, delta=1e-4)
        self.assertLess(max(stopped), -40)
        # One order less would not do.
        fewer = self.design("--family", "elliptic", "--type", "bandpass", "--edges", "300,3400", "--rate", RATE,
                            "--ripple", 0.5, "--attenuation", 40, "--order", filter_["order"] - 1)
        self.assertGreater(max(decibels(fewer, 200), decibels(fewer, 3600)), -40)

    def test_published_designs(self):
        # Oppenheim, Schafer, Discrete-Time Signal Processing, bilinear Butterworth example: 0.89125 up to 0.2 pi, 0.17783
        # from 0.3 pi on; printed with four places.
        filter_ = self.design("--family", "butterworth", "--type", "lowpass", "--edges", "0.2,0.3", "--rate", 2,
                              "--ripple", 1, "--attenuation", 15)
        self.assertEqual(filter_["order"], 6)
        rounded = sorted([round(x, 4) for x in row[4:]] for row in filter_["sections"])
        self.assertEqual(rounded, [[-1.2686, 0.7051], [-1.0106, 0.3583], [-0.9044, 0.2155]])
        self.assertAlmostEqual(math.prod(row[0] for row in filter_["sections"]), 0.0007378, delta=1e-7)
        # SciPy 1.10, ellip(5, 1, 60, 0.3, output="zpk").
        filter_ = self.design("--family", "elliptic", "--type", "lowpass", "--order", 5, "--ripple", 1,
                              "--attenuation", 60, "--edges", 0.3, "--rate", 2, "--form", "zpk")
        self.assertAlmostEqual(filter_["gain"], 0.009131817007414438, delta=1e-14)
        expected = {"zeros": [(-1, 0), (-0.29298383, 0.9561174), (0.11950151, 0.99283402)],
                    "poles": [(0.55749801, 0.76115747), (0.63902956, 0.49678279), (0.71547239, 0)]}
        for part, roots in expected.items():
            upper = sorted(tuple(root) for root in filter_[part] if root[1] >= 0)
            for actual, (re_, im) in zip(upper, roots, strict=True):
                self.assertLess(abs(complex(*actual) - complex(re_, im)), 1e-8)

    def test_orders_are_those_that_scipy_estimates(self):
        # buttord, cheb1ord, cheb2ord, ellipord of SciPy 1.10, and the edges where both keep to one convention.
        cases = [("lowpass", "0.2,0.3", 60, [16, 8, 8, 5], [None, [0.2], [0.28647639976553163], [0.2]]),
                 ("highpass", "0.2,0.3", 70, [18, 9, 9, 6], [None, [0.3], [0.2069749218290329], [0.3]]),
                 ("bandpass", "0.1,0.2,0.5,0.6", 80, [18, 9, 9, 6],
                  [None, [0.2, 0.5], [0.14876938, 0.59748448], [0.2, 0.5]]),
                 ("bandstop", "0.1,0.2,0.5,0.6", 90, [20, 10, 10, 7], [None] * 4)]
        for kind, edges, attenuation, orders, cutoffs in cases:
            arguments = ["order", "--type", kind, "--edges", edges, "--rate", 2, "--ripple", 3, "--attenuation", attenuation]
            table = json.loads(self.run_program(*arguments, "--format", "json"))["orders"]
            self.assertEqual([row["family"] for row in table], ["butterworth", "chebyshev1", "chebyshev2", "elliptic"])
            self.assertEqual([row["order"] for row in table], orders)
            self.assertEqual([row["poles"] for row in table], [n * (edges.count(",") + 1) // 2 for n in orders])
            for row, expected in zip(table, cutoffs):
                for actual, reference in zip(row["cutoffs_hz"], expected or []):
                    self.assertAlmostEqual(actual, reference, delta=1e-8)
            text = self.run_program(*arguments).split("\n")
            self.assertEqual([line.split()[:2] for line in text[2:6]], [[row["family"], str(row["order"])] for row in table])
            one = self.run_program(*arguments, "--family", "elliptic").split("\n")
            self.assertEqual((one[2], len(one)), (text[5], 4))

    def test_designs_meet_the_requirement_they_were_estimated_from(self):
        cases = [("lowpass", [1000, 1300]), ("highpass", [1000, 1300]), ("bandpass", [600, 800, 1700, 2100]),
                 ("bandstop", [600, 800, 1700, 2100])]
        for kind, edges in cases:
            stops_first = kind in ("highpass", "bandpass")
            for family in ["butterworth", "chebyshev1", "chebyshev2", "elliptic"]:
                with self.subTest(family=family, kind=kind):
                    arguments = ["--family", family, "--type", kind, "--rate", RATE]
                    made = self.design(*arguments, "--edges", ",".join(map(str, edges)), "--ripple", 0.5,
                                       "--attenuation", 50)
                    for k, edge in enumerate(edges):
                        loss = -decibels(made, edge)
                        if (k in (0, 3)) == stops_first:
                            self.assertGreater(loss, 50 - 1e-9)
                        else:
                            # A bandstop of even order is scaled to 1 at zero frequency and rises by the ripple.
                            self.assertLess(abs(loss), 0.5 + 1e-9)
                    takes = {"chebyshev1": ["--ripple", 0.5], "chebyshev2": ["--attenuation", 50],
                             "elliptic": ["--ripple", 0.5, "--attenuation", 50]}.get(family, [])
                    again = self.design(*arguments, *takes, "--order", made["order"], "--edges",
                                        ",".join(map(repr, made["cutoffs_hz"])))
                    self.assertEqual(again["sections"], made["sections"])

    def test_all_forms_routes_and_precisions_are_one_filter(self):
        points = [cmath.exp(2j * math.pi * f / RATE) for f in [10, 250, 300, 1000, 2500, 3410, 3900]]
        for family in ["butterworth", "chebyshev1", "chebyshev2", "elliptic", "bessel"]:
            takes = {"chebyshev1": ["--ripple", 1], "chebyshev2": ["--attenuation", 40],
                     "elliptic": ["--ripple", 1, "--attenuation", 40]}.get(family, [])
            arguments = ["--family", family, "--type", "bandpass", "--order", 3, "--edges", "300,3400", *takes]
            digital = [*arguments, "--rate", RATE]
            reference = self.design(*digital)
            variants = [["--form", form] for form in ["zpk", "ss", "tf"]]
            variants += [["--route", route] for route in ["state-space-analog", "zero-pole-discrete"]]
            for variant in variants + [["--precision", "single"]]:
                with self.subTest(family=family, variant=variant):
                    other = self.design(*digital, *variant)
                    tolerance = 1e-5 if "single" in variant else 1e-9
                    for z in points:
                        self.assertLess(abs(response(other, z) - response(reference, z)), tolerance)
            single = [x for row in self.design(*digital, "--precision", "single")["sections"] for x in row]
            self.assertEqual(single, [struct.unpack("f", struct.pack("f", x))[0] for x in single])
            analog = self.design(*arguments, "--analog", "--form", "zpk")
            for form in ["ss", "tf"]:
                other = self.design(*arguments, "--analog", "--form", form)
                for s in [100j, 400j, 1000j, 5000j]:
                    self.assertLess(abs(response(other, s) - response(analog, s)), 1e-9)

    def test_csv_json_and_c_hold_the_same_numbers(self):
        compiler = shutil.which("cc") or shutil.which("gcc") or shutil.which("clang")
        tables = {"sos": ["sections"], "zpk": ["zeros", "poles", "gain"], "ss": ["A", "B", "C", "D"],
                  "tf": ["numerator", "denominator"]}
        for form, names in tables.items():
            for precision in ["double", "single"]:
                arguments = ["--family", "elliptic", *TELEPHONE, "--form", form, "--precision", precision]
                document = self.design(*arguments)
                parts = [document[name] if isinstance(document[name], list) else [document[name]] for name in names]
                flat = [[x for row in part for x in (row if isinstance(row, list) else [row])] for part in parts]
                csv = self.run_program("design", "iir", *arguments).split()[1:]
                numbers = [float(x) for line in csv for x in line.split(",") if x not in ("zero", "pole", "gain")]
                if form == "zpk":
                    self.assertEqual(numbers, flat[0] + flat[1] + flat[2] + [0])
                elif form == "ss":
                    block = [row + [b] for row, b in zip(document["A"], document["B"])] + [document["C"] + [document["D"]]]
                    self.assertEqual(numbers, [x for row in block for x in row])
                else:
                    self.assertEqual(numbers, flat[0] if form == "sos" else [x for row in zip(*flat) for x in row])
                self.run_program("design", "iir", *arguments, "--out", "filter.h")
                if compiler:
                    prints = "".join(f"for (unsigned n = 0; n < sizeof {name} / sizeof(real); ++n) "
                                     f"printf(\"%.17g\\n\", (double)((const real *)&{name})[n]);" for name in names)
                    real = "double" if precision == "double" else "float"
                    Path(self.path("main.c")).write_text(f'#include <stdio.h>\n#include "filter.h"\ntypedef {real} real;\n'
                                                         f"int main(void) {{ {prints} return 0; }}\n")
                    subprocess.run([compiler, "-Wall", "-Werror", "-o", "main", "main.c"], cwd=self.directory, check=True)
                    said = subprocess.run([self.path("main")], check=True, capture_output=True, text=True).stdout
                    self.assertEqual([float(x) for x in said.split()], sum(flat, []))

    def test_what_was_estimated_and_what_is_fragile_is_told(self):
        estimated = self.call("design", "iir", "--family", "elliptic", *TELEPHONE).stderr
        self.assertRegex(estimated, r"^passband: note: the requirement takes: elliptic bandpass of order \d, 300 to 3400 Hz\n$")
        given = ["--family", "butterworth", "--type", "lowpass", "--order", 2, "--edges", 1000, "--rate", RATE]
        self.assertEqual(self.call("design", "iir", *given).stderr, "")
        self.assertIn("warning: a transfer function is fragile", self.call("design", "iir", *given, "--form", "tf").stderr)

    def test_each_channel_runs_through_the_sections_for_every_block_size(self):
        sections = self.sections_file("sections.csv")
        self.sections_file("sections.json")
        left, right = noise(900, seed=2), noise(900, seed=3)
        write_csv(self.path("in.csv"), left, right)
        outputs = set()
        for name in ["sections.csv", "sections.json"]:
            for block in [1, 7, 256, 100000]:
                self.run_program("filter", "--sections", name, "--in", "in.csv", "--out", "out.csv", "--block", block)
                outputs.add(Path(self.path("out.csv")).read_bytes())
        self.assertEqual(len(outputs), 1)
        for x, y in zip([left, right], read_csv(self.path("out.csv"))):
            # Poles at a distance of 0.01 from the circle: rounding errors add up over some hundred samples.
            self.assert_close(y, Cascade(sections).run(x), 1000 * EPS)
        self.run_program("filter", "--sections", "sections.csv", "--in", "in.csv", "--out", "single.csv", "--precision",
                         "single")
        for y, z in zip(read_csv(self.path("out.csv")), read_csv(self.path("single.csv"))):
            self.assert_close(z, y, 1000 * 2.0 ** -23)
            self.assertNotEqual(z, y)

    def test_zero_phase_filters_the_whole_signal_forward_and_backward(self):
        sections = self.sections_file()
        x = noise(1000, seed=4)
        write_csv(self.path("in.csv"), x, x[::-1])
        said = self.run_program("filter", "--sections", "sections.csv", "--in", "in.csv", "--out", "out.csv",
                                "--zero-phase", "--block", 64)
        self.assertIn("forward and backward", said)
        for source, y in zip([x, x[::-1]], read_csv(self.path("out.csv"))):
            cascade = Cascade(sections)
            forward = cascade.run(source + [0.0] * 100)
            self.assert_close(y, cascade.run(forward[::-1])[::-1][:1000], 1000 * EPS)

    def test_wav_files_and_rates(self):
        self.sections_file("sections.json")
        write_pcm(self.path("in.wav"), [(int(20000 * x),) for x in noise(300)], rate=8000)
        arguments = ["filter", "--sections", "sections.json", "--in", "in.wav", "--out"]
        said = self.run_program(*arguments, "out.wav", "--subtype", "float")
        self.assertIn("sections.json, 5 sections, double precision\n", said)
        self.run_program(*arguments, "out.csv")
        self.assert_close(read_float_wav(self.path("out.wav")), read_csv(self.path("out.csv"))[0], 2.0 ** -24)
        write_pcm(self.path("in.wav"), [(1,)] * 10, rate=48000)
        self.assertIn("note: the sections are made for 8000 Hz and used at 48000 Hz",
                      self.call(*arguments, "out.wav").stderr)
        write_csv(self.path("ring.csv"), *[[x] for x in [1.0, 0, 0, 1, -2, 1]])
        self.assertIn("section 1 of ring.csv is not stable",
                      self.call("filter", "--sections", "ring.csv", "--in", "in.wav", "--out", "out.wav").stderr)

    def test_plot_shows_phase_and_group_delay(self):
        arguments = ["--family", "chebyshev1", "--type", "bandpass", "--order", 3, "--edges", "700,1900", "--ripple", 1,
                     "--rate", RATE]
        sections = self.design(*arguments)["sections"]
        self.run_program("design", "iir", *arguments, "--plot", "p.svg", "--out", "p.csv")
        root = ElementTree.parse(self.path("p.svg")).getroot()
        text = " ".join(root.itertext())
        for words in ["chebyshev1 bandpass of order 3, 700 to 1900 Hz", "Magnitude", "Gain in dB", "Phase in degrees",
                      "Delay in ms", "Zeros and poles", "Re z"]:
            self.assertIn(words, text)

        def phase(f):
            angle = 0.0
            for b0, b1, b2, _, a1, a2 in sections:
                turn = cmath.exp(-2j * math.pi * f / RATE)
                angle += cmath.phase((b0 + b1 * turn + b2 * turn ** 2) / (1 + a1 * turn + a2 * turn ** 2))
            return angle

        def delay(f):
            # tau = Re(sum n h[n] z^-n / sum h[n] z^-n) of the numerator minus that of the denominator.
            total = 0.0
            turn = cmath.exp(-2j * math.pi * f / RATE)
            for b0, b1, b2, _, a1, a2 in sections:
                total += ((b1 * turn + 2 * b2 * turn ** 2) / (b0 + b1 * turn + b2 * turn ** 2)).real
                total -= ((a1 * turn + 2 * a2 * turn ** 2) / (1 + a1 * turn + a2 * turn ** 2)).real
            return total

        for panel, expected, period in [("b", phase, 2 * math.pi), ("c", delay, None)]:
            points = self.curve(root, f"gnuplot_plot_1{panel}")
            left, right = points[0][0], points[-1][0]
            inner = points[20:-20]  # away from the zeros at both ends
            y = [expected((x - left) / (right - left) * RATE / 2) for x, _ in inner]
            for n in range(1, len(y)):
                while period and y[n] > y[n - 1] + period / 2:
                    y[n:] = [value - period for value in y[n:]]
            # One scale for all points: the curve drawn is the curve expected.
            top, bottom = max(range(len(y)), key=y.__getitem__), min(range(len(y)), key=y.__getitem__)
            scale = (inner[top][1] - inner[bottom][1]) / (y[top] - y[bottom])
            self.assertLess(inner[top][1], inner[bottom][1] - 200)
            self.assert_close([py for _, py in inner], [inner[bottom][1] + scale * (v - y[bottom]) for v in y], 1.0)

    def curve(self, root, name):
        group = next(element for element in root.iter() if element.get("id") == name)
        path = next(element for element in group.iter() if element.tag.endswith("path"))
        return [tuple(map(float, pair.split(","))) for pair in re.findall(r"[-\d.]+,[-\d.]+", path.get("d"))]

    def test_designs_that_cannot_be(self):
        low = ["--family", "butterworth", "--type", "lowpass", "--rate", 8000]
        asked = ["--ripple", 1, "--attenuation", 60]
        given = [*low, "--edges", 1000, "--order", 4]
        cases = [
            (["--type", "lowpass", "--edges", "1,2", "--rate", 8000], "--family is required"),
            (["--family", "cauer", *low[2:], "--edges", "1,2"], "'cauer' is none of butterworth, chebyshev1"),
            ([*low[:2], "--type", "hilbert", "--edges", 1, "--rate", 8], "'hilbert' is none of lowpass, highpass"),
            ([*low[:4], "--edges", "1,2", *asked], "--rate is required"),
            ([*low, "--edges", "1,2", "--analog"], "--rate does not go with --analog"),
            ([*low[:4], "--rate", "nan", "--edges", 1], "not a sampling rate"),
            ([*low, "--edges", 1000, *asked], "estimated from 2 frequencies, the ends of its transition bands; 1 given"),
            ([*low, "--edges", "1000,4000", *asked], "4000 Hz is not below 4000 Hz, half the sampling rate"),
            ([*low, "--edges", "0,1000", *asked], "0 Hz is not above 0"),
            ([*low, "--edges", "nan,1000", *asked], "nan is not a frequency"),
            ([*low, "--edges", "1000,1000", *asked], "1000 Hz after 1000 Hz; frequencies must ascend"),
            ([*low, "--edges", "1000,1200", "--ripple", 1], "--attenuation is required"),
            ([*low, "--edges", "1000,1200", "--attenuation", 60], "--ripple is required"),
            ([*low, "--edges", "1000,1200", "--ripple", "nan", "--attenuation", 60], "nan dB is not between 0 and 3000"),
            ([*low, "--edges", "1000,1200", "--ripple", 3, "--attenuation", 2], "2 dB is not above the ripple of 3 dB"),
            ([*low, "--edges", "1000,1000.001", *asked], "cannot design a butterworth lowpass of order"),
            ([*given[:-1], 0], "0 is not between 1 and 1000"), ([*given[:-1], "9999999999"], "9999999999"),
            (["--family", "elliptic", *given[2:-1], 51, *asked], "51 is not between 1 and 50"),
            ([*low, "--edges", "1000,1200", "--order", 4], "with --order a lowpass takes 1 frequency, its cut-off; 2 given"),
            ([*given, "--ripple", 1], "--ripple does not go with --order for a butterworth filter"),
            (["--family", "chebyshev1", *given[2:]], "--ripple is required for a chebyshev1 filter"),
            (["--family", "bessel", *low[2:], "--edges", "1000,1200", *asked], "that of a bessel filter is not estimated"),
            ([*given, "--form", "zap"], "zap"), ([*given, "--route", "scenic"], "'scenic' is none of zero-pole-analog"),
            ([*given, "--form", "ss", "--route", "zero-pole-analog"], "reached by state-space-analog only"),
            ([*low[:4], "--edges", 5, "--order", 2, "--analog", "--form", "sos"], "sections are for digital filters"),
            ([*low[:4], "--edges", 5, "--order", 2, "--analog", "--route", "zero-pole-discrete"], "digital filters only"),
            ([*low[:4], "--edges", "1e200", "--order", 9, "--analog"], "do not fit into double precision"),
            ([*low[:4], "--edges", "1e200", "--order", 9, "--analog", "--form", "tf"], "cannot design a butterworth lowpass"),
            ([*given, "--plot", "p.png"], "extension .svg"), ([*given, "--out", "no/such/f.csv"], "No such file")]
        for arguments, reason in cases:
            with self.subTest(arguments=arguments):
                self.assert_refused(["design", "iir", *arguments], reason)
        self.assert_refused(["order", *low, "--edges", "1,2"], "--ripple is required")
        self.assert_refused(["order", "--family", "bessel", *low[2:], "--edges", "1,2", *asked], "not estimated")

    def test_sections_that_cannot_be_filtered_with(self):
        write_pcm(self.path("in.wav"), [(100,)] * 20, rate=8000)
        given = ["--family", "butterworth", "--type", "lowpass", "--order", 2, "--edges", 1000, "--rate", 8000]
        for form in ["tf", "zpk", "ss"]:
            for extension in ["csv", "json"]:
                self.run_program("design", "iir", *given, "--form", form, "--out", f"{form}.{extension}")
        self.run_program("design", "iir", *given, "--out", "good.csv")
        files = {"five.csv": "1,0,0,1,0\n", "zero.csv": "1,0,0,0,0,0\n", "nan.csv": "1,0,0,1,nan,0\n",
                 "empty.json": "[]", "short.json": "[[1, 2]]", "taps.json": "{\"taps\": [1]}",
                 "words.json": "{\"sections\": \"none\"}", "bad.json": "{\"sections\": [[1,"}
        for name, text in files.items():
            Path(self.path(name)).write_text(text)
        for name, reason in [("tf.csv", "is a transfer function"), ("tf.json", "is a transfer function"),
                             ("zpk.csv", "'zero' is not a number"), ("zpk.json", "a filter as zpk; design sections"),
                             ("ss.csv", "have 6 columns"), ("ss.json", "a filter as ss; design sections"),
                             ("five.csv", "5 found"), ("zero.csv", "section 1 has a0 = 0"), ("nan.csv", "holds nan"),
                             ("empty.json", "holds no sections"), ("short.json", "a section has 6 numbers, not 2"),
                             ("taps.json", "--taps takes them"), ("words.json", "not a JSON section file"),
                             ("bad.json", "not a JSON section file"), ("none.csv", "No such file")]:
            with self.subTest(sections=name):
                self.assert_refused(["filter", "--sections", name, "--in", "in.wav", "--out", "out.wav"], reason)
        sections = ["filter", "--sections", "good.csv", "--in", "in.wav", "--out", "out.wav"]
        for extra, reason in [(["--align"], "--align: sections have no one delay"), (["--down", 2], "--up and --down go"),
                              (["--taps", "t.csv"], "--taps"), (["--type", "lowpass"], "--type does not go with --sections")]:
            self.assert_refused([*sections, *extra], reason)
        self.assert_refused(["filter", "--type", "lowpass", "--edges", "1000,1200", "--in", "in.wav", "--out", "out.wav",
                             "--zero-phase"], "--zero-phase goes with --sections")
        self.assertFalse(Path(self.path("out.wav")).exists())


if __name__ == "__main__":
    unittest.main()
