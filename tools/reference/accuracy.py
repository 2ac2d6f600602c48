"""Writes docs/accuracy.md: IIR designs of the program passband and of SciPy against designs with 60 digits.

Usage: accuracy.py PROGRAM [LARGEST_ORDER], where PROGRAM is the built `passband`. Takes some minutes.
"""

import json
import math
import subprocess
import sys
import warnings
from pathlib import Path

import mpmath
import numpy
import scipy
from mpmath import mpc, mpf
from scipy import signal

import iir_filters as exact

DOCUMENT = Path(__file__).resolve().parents[2] / "docs" / "accuracy.md"
EPS = 2.0**-52
FAMILIES = {"butterworth": "Butterworth", "chebyshev1": "Chebyshev I", "chebyshev2": "Chebyshev II",
            "elliptic": "elliptic", "bessel": "Bessel"}
DECIBELS = {"chebyshev1": ["--ripple", exact.RIPPLE], "chebyshev2": ["--attenuation", exact.ATTENUATION],
            "elliptic": ["--ripple", exact.RIPPLE, "--attenuation", exact.ATTENUATION]}

TEXT = """# Accuracy of the IIR designs

`tools/reference/accuracy.py build/release/apps/passband/passband` made this page: each design of the program `passband` against the
same design with {digits} digits (mpmath {mpmath}), with SciPy {scipy} (NumPy {numpy}) beside it. All orders from 1 to {orders}; {ripple} dB of
ripple and {attenuation} dB of attenuation where a family takes them. An entry is the largest error over all orders, ours first, then
SciPy's. "Fails" means an exception, an infinity or NaN, or a wrong number of roots; its orders stand behind it and are left out of the
largest error. SciPy's bandstop filters with pass-band ripple are taken at Passband's reference gain, 0 dB at zero frequency.

## Analog prototypes

Errors of zeros and poles relative to their magnitude, of the gain relative to itself, in units of 2^-52.

{prototypes}

## Digital filters as zeros and poles

The cut-offs as fractions of half the sampling rate. Errors of zeros and poles relative to their magnitude, of the gain relative to
itself.

{digital}

## Digital filters as second-order sections

The magnitude of the response at the cut-offs, evaluated with {digits} digits from the coefficients as printed, relative to the exact
one.

{sections}

Elliptic filters of high order pass from one band to the other so steeply that rounding the exact coefficients to doubles alone moves
the response at the cut-off: by 3e-13 at order 20 of the lowpass, 3e-10 at 30, 6e-6 at 50. No section filter in double precision does better.

## Sections or a transfer function

A Butterworth bandpass of order {fragile_order} from 1 to 2 Hz at 200 Hz, as both forms print it in double precision. The gain in the middle of the
band should be 1, and no pole may leave the unit circle.

{fragile}

"""

FRAGILE_ORDERS = [5, 8]
FRAGILE_BAND = [0.01, 0.02]


class Failure(Exception):
    pass


def ours(program, family, order, kind, edges, form):
    command = [program, "design", "iir", "--family", family, "--type", kind, "--order", order, "--edges",
               ",".join(map(str, edges)), "--form", form, "--format", "json", *DECIBELS.get(family, [])]
    command += ["--analog"] if form == "prototype" else ["--rate", 2]
    command = [("zpk" if part == "prototype" else str(part)) for part in command]
    run = subprocess.run(command, capture_output=True, text=True)
    if run.returncode:
        raise Failure(run.stderr)
    design = json.loads(run.stdout)
    if form == "sos":
        return design["sections"]
    if form == "tf":
        return [list(map(mpf, design[name])) for name in ("numerator", "denominator")]
    return [[complex(*root) for root in design[name]] for name in ("zeros", "poles")] + [design["gain"]]


def scipy_design(family, order, kind, edges, form):
    options = {"N": order, "Wn": edges if len(edges) > 1 else edges[0], "btype": kind, "analog": form == "prototype",
               "output": "sos" if form == "sos" else "zpk"}
    ripple, attenuation = float(exact.RIPPLE), float(exact.ATTENUATION)
    calls = {"butterworth": lambda: signal.butter(**options), "chebyshev1": lambda: signal.cheby1(rp=ripple, **options),
             "chebyshev2": lambda: signal.cheby2(rs=attenuation, **options),
             "elliptic": lambda: signal.ellip(rp=ripple, rs=attenuation, **options),
             "bessel": lambda: signal.bessel(norm="phase", **options)}
    try:
        with warnings.catch_warnings(), numpy.errstate(all="ignore"):
            warnings.simplefilter("ignore")
            return at_our_reference(family, order, kind, form, calls[family]())
    except (ValueError, RuntimeError, ArithmeticError, numpy.linalg.LinAlgError) as error:
        raise Failure(str(error)) from error


def at_our_reference(family, order, kind, form, design):
    """SciPy lets bandstop filters with pass-band ripple of even order begin at -ripple, Passband at 0 dB."""
    if kind == "bandstop" and family in ("chebyshev1", "elliptic") and order % 2 == 0:
        rise = float(mpmath.sqrt(1 + exact.excess(exact.RIPPLE)))
        if form == "sos":
            design[0, :3] *= rise
        else:
            design = (*design[:2], design[2] * rise)
    return design


def root_error(found, expected):
    """The largest relative distance of the exact roots to roots found, each of which counts once."""
    left = [complex(x) for x in found]
    if len(left) != len(expected) or not all(math.isfinite(abs(x)) for x in left):
        raise Failure("roots")
    error = mpf(0)
    for root in expected:
        rough = complex(root)
        nearest = min(range(len(left)), key=lambda n: abs(left[n] - rough))
        error = max(error, abs(mpc(left.pop(nearest)) - root) / abs(root))
    return error


def roots_and_gain_errors(found, expected):
    errors = [root_error(f, e) for f, e in zip(found[:2], expected[:2])]
    if not math.isfinite(found[2]):
        raise Failure("gain")
    return errors + [abs(mpf(float(found[2])) / expected[2] - 1)]


def section_error(sections, expected, edges):
    def response(frequency):
        z = mpmath.expj(mpmath.pi * mpf(frequency))
        parts = [[mpf(float(c)) for c in section] for section in sections]
        return abs(mpmath.fprod(((s[0] * z + s[1]) * z + s[2]) / ((s[3] * z + s[4]) * z + s[5]) for s in parts))

    if not all(math.isfinite(c) for section in sections for c in section):
        raise Failure("coefficients")
    return [max(abs(response(f) / exact.response(*expected, f) - 1) for f in edges)]


def fragile_rows(program):
    """The gain in the middle of a narrow band and the largest pole, from sections and from a transfer function."""
    rows = []
    for order in FRAGILE_ORDERS:
        expected = exact.design("butterworth", "bandpass", order, FRAGILE_BAND)
        tangents = [mpmath.tan(mpmath.pi * mpf(f) / 2) for f in FRAGILE_BAND]
        z = mpmath.expj(2 * mpmath.atan(mpmath.sqrt(mpmath.fprod(tangents))))
        sections = ours(program, "butterworth", order, "bandpass", FRAGILE_BAND, "sos")
        forms = {"exact": ([], []), "sections": ([s[:3] for s in sections], [s[3:] for s in sections]),
                 "transfer function": tuple([c] for c in ours(program, "butterworth", order, "bandpass", FRAGILE_BAND, "tf"))}
        for form, (numerators, denominators) in forms.items():
            gain = abs(mpmath.fprod(mpmath.polyval(n, z) / mpmath.polyval(d, z) for n, d in zip(numerators, denominators)))
            poles = [p for d in denominators for p in mpmath.polyroots(d, maxsteps=500, extraprec=500)]
            if form == "exact":
                gain, poles = exact_gain(expected, z), expected[1]
            rows.append([str(order), form, f"{float(gain):.12f}", f"{float(max(map(abs, poles))):.12f}"])
    return rows


def exact_gain(design, z):
    zeros, poles, k = design
    return abs(k * mpmath.fprod(z - x for x in zeros) / mpmath.fprod(z - x for x in poles))


class Worst:
    """The largest errors over the orders, and the orders that failed."""

    def __init__(self, parts):
        self.errors, self.failed = [mpf(0)] * parts, []

    def add(self, order, measure):
        try:
            self.errors = [max(a, b) for a, b in zip(self.errors, measure())]
        except (Failure, ZeroDivisionError):
            self.failed.append(order)

    def cell(self, part, scale):
        if not self.failed:
            return number(self.errors[part] / scale)
        last = self.failed[-1]
        whole = self.failed == list(range(self.failed[0], last + 1))
        orders = f"{self.failed[0]} to {last}" if whole and len(self.failed) > 1 else f"{len(self.failed)} orders"
        return f"{number(self.errors[part] / scale)}, fails: {orders if len(self.failed) > 1 else last}"


def number(value):
    value = float(value)
    return "0" if value == 0 else f"{value:.2f}" if 0.01 <= value < 100 else f"{value:.1e}"


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def measure(program, family, orders, kind, edges, form):
    """The worst errors of ours and of SciPy."""
    parts = 1 if form == "sos" else 3
    worst = [Worst(parts), Worst(parts)]
    for order in orders:
        expected = getattr(exact, family)(order) if form == "prototype" else exact.design(family, kind, order, edges)
        for who, make in zip(worst, [lambda *a: ours(program, *a), scipy_design]):
            if form == "sos":
                who.add(order, lambda: section_error(make(family, order, kind, edges, form), expected, edges))
            else:
                who.add(order, lambda: roots_and_gain_errors(make(family, order, kind, edges, form), expected))
    return worst


def remember(function):
    known = {}

    def call(order):
        if order not in known:
            known[order] = function(order)
        return known[order]
    return call


def main():
    program = str(Path(sys.argv[1]).resolve())
    orders = range(1, int(sys.argv[2] if len(sys.argv) > 2 else 50) + 1)
    for family in FAMILIES:
        setattr(exact, family, remember(getattr(exact, family)))
    head = ["zeros", "zeros, SciPy", "poles", "poles, SciPy", "gain", "gain, SciPy"]
    prototypes, digital, sections = [], [], []
    for family, title in FAMILIES.items():
        pair = measure(program, family, orders, "lowpass", [1], "prototype")
        prototypes.append([title] + [who.cell(part, EPS) for part in range(3) for who in pair])
        for kind, edges in exact.BANDS.items():
            print(family, kind, file=sys.stderr)
            name = [title, f"{kind} {' to '.join(map(str, edges))}"]
            pair = measure(program, family, orders, kind, edges, "zpk")
            digital.append(name + [who.cell(part, 1) for part in range(3) for who in pair])
            pair = measure(program, family, orders, kind, edges, "sos")
            sections.append(name + [who.cell(0, 1) for who in pair])
    DOCUMENT.write_text(TEXT.format(
        digits=mpmath.mp.dps, mpmath=mpmath.__version__, scipy=scipy.__version__, numpy=numpy.__version__,
        orders=orders[-1], ripple=exact.RIPPLE, attenuation=exact.ATTENUATION,
        prototypes=table(["family", *head], prototypes), digital=table(["family", "band", *head], digital),
        sections=table(["family", "band", "response", "response, SciPy"], sections),
        fragile_order=" or ".join(map(str, FRAGILE_ORDERS)),
        fragile=table(["order", "form", "gain at the centre", "largest pole"], fragile_rows(program))).rstrip("\n") + "\n")


if __name__ == "__main__":
    main()
