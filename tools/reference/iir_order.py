"""Reference values for tests/iir_design/order_estimation_test.cpp with 50 digits.

One row for each requirement and family: the order, then the edges. The edges of a bandstop come from minimising the
order over the edges of the pass band by golden sections, not from closed forms.
"""

import mpmath
from mpmath import mp, mpf

from reference_table import doubles, write

mp.dps = 50

# (type, edges, analog)
BANDS = [("lowpass", [0.2, 0.3], 0), ("lowpass", [0.999, 0.9995], 0), ("lowpass", [0.3, 0.3001], 0),
         ("lowpass", [1e-5, 3e-5], 0), ("lowpass", [200, 600], 1), ("highpass", [0.2, 0.3], 0), ("highpass", [100, 700], 1),
         ("bandpass", [0.1, 0.2, 0.5, 0.6], 0), ("bandpass", [0.3, 0.31, 0.32, 0.34], 0), ("bandpass", [10, 20, 50, 60], 1),
         ("bandstop", [0.1, 0.25, 0.3, 0.8], 0), ("bandstop", [0.3, 0.31, 0.32, 0.33], 0), ("bandstop", [10, 30, 31, 40], 1),
         ("bandstop", [0.05, 0.1, 0.12, 0.9], 0)]
LOSSES = [(1, 40), (0.1, 80), (3, 25)]


def split(kind, edges):
    if kind == "lowpass":
        return [edges[0]], [edges[1]]
    if kind == "highpass":
        return [edges[1]], [edges[0]]
    return (edges[1:3], [edges[0], edges[3]]) if kind == "bandpass" else ([edges[0], edges[3]], edges[1:3])


def ratio(kind, passed, stopped):
    if kind == "lowpass":
        return stopped[0] / passed[0]
    if kind == "highpass":
        return passed[0] / stopped[0]
    low, high = passed
    mapped = [abs((s**2 - low * high) / (s * (low - high))) for s in stopped]
    return min(mapped) if kind == "bandpass" else min(1 / m for m in mapped)


def tighten(passed, stopped):
    """Larger ratios mean lower orders, for every family: moves one edge after the other to the largest ratio."""
    distance = mpf(10) ** -12
    best = lambda low, high, place: golden(lambda x: ratio("bandstop", place(x), stopped), low, high)
    low = best(passed[0], stopped[0] - distance, lambda x: [x, passed[1]])
    high = best(stopped[1] + distance, passed[1], lambda x: [low, x])
    return [low, high]


def golden(value, low, high):
    step = (mpmath.sqrt(5) - 1) / 2
    for _ in range(180):
        left, right = high - step * (high - low), low + step * (high - low)
        if value(left) > value(right):
            high = right
        else:
            low = left
    return (low + high) / 2


def order(family, kind, edges, ripple, attenuation, analog):
    passed, stopped = split(kind, [mpf(e) if analog else mpmath.tan(mpmath.pi * mpf(e) / 2) for e in edges])
    if kind == "bandstop":
        passed = tighten(passed, stopped)
    gs, gp = (mpmath.expm1(mpf(x) / 10 * mpmath.log(10)) for x in (attenuation, ripple))
    wa = ratio(kind, passed, stopped)
    if family == "butterworth":
        n = mpmath.ceil(mpmath.log(gs / gp) / (2 * mpmath.log(wa)))
        result = scaled(kind, passed, wa / mpmath.power(gs, 1 / (2 * n)))
    elif family == "elliptic":
        k, k1 = 1 / wa**2, gp / gs
        n = mpmath.ceil(mpmath.ellipk(k) * mpmath.ellipk(1 - k1) / (mpmath.ellipk(1 - k) * mpmath.ellipk(k1)))
        result = passed
    else:
        n = mpmath.ceil(mpmath.acosh(mpmath.sqrt(gs / gp)) / mpmath.acosh(wa))
        result = passed
        if family == "chebyshev2":
            result = scaled(kind, passed, mpmath.cosh(mpmath.acosh(mpmath.sqrt(gs / gp)) / n))
    return [n, *(result if analog else [2 / mpmath.pi * mpmath.atan(w) for w in result])]


def scaled(kind, passed, factor):
    """The frequencies of the band that the frequencies +-factor of the lowpass are mapped to."""
    if kind == "lowpass":
        return [factor * passed[0]]
    if kind == "highpass":
        return [passed[0] / factor]
    low, high = passed
    half = (high - low) * (factor if kind == "bandpass" else 1 / factor) / 2
    root = mpmath.sqrt(half**2 + low * high)
    return [root - half, root + half]


def main():
    rows = {}
    for family in ("butterworth", "chebyshev1", "chebyshev2", "elliptic"):
        for kind, edges, analog in BANDS:
            for ripple, attenuation in LOSSES:
                name = f"{family} {kind} {analog} {ripple} {attenuation} {' '.join(map(str, edges))}"
                rows[name] = doubles(order(family, kind, edges, ripple, attenuation, analog))
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", rows, "iir_design")


if __name__ == "__main__":
    main()
