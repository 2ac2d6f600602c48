"""Reference values for tests/fir_design/fractional_fir_test.cpp with 50 digits.

Rows "ideal N type offset step fs edges..." hold the sampled responses, "delay preset d" the taps of FractionalImpulse:
the response of the ideal lowpass times Kaiser's window, both at the places n + 1 - d. Formulas: windowed_fir.py.
"""

import mpmath
from mpmath import mp, mpf

from reference_table import doubles, write
from windowed_fir import BANDPASS, BANDSTOP, DIFF3, DIFF4, HIGHPASS, HILBERT3, HILBERT4, LOWPASS, sinc_term

mp.dps = 50

IDEAL = [(11, LOWPASS, 0.25, 1, 2, [0.3]), (11, LOWPASS, 0, 0.5, 2, [0.25, 0.35]), (31, BANDPASS, 0.75, 1, 48000, [3000, 9000]),
         (12, HIGHPASS, 0.5, 1, 2, [0.6]), (9, HIGHPASS, 0.1, 1, 2, [0.6]), (7, BANDSTOP, 0.3, 0.25, 2, [0.2, 0.3, 0.5, 0.6]),
         (15, HILBERT3, 0.001, 1, 2, [0.1]), (16, HILBERT4, 0.4, 2, 2, [0.1]), (15, DIFF3, 1e-6, 1, 8, [0.9]),
         (16, DIFF4, 1, 0.125, 2, [0.9]), (9999, LOWPASS, 0.123, 1, 2, [0.77])]
PRESETS = [(63, 17), (63, 14), (163, 14), (63, 10), (63, 5), (17, 4), (9, 4)]
DELAYS = [0, 0.1, 0.5, 1]


def response(kind, x, edges, fs):
    e = [2 * mpf(v) / fs for v in edges]
    if len(e) == 4:
        e = [(e[0] + e[1]) / 2, (e[2] + e[3]) / 2]
    elif len(e) == 2 and kind in (LOWPASS, HIGHPASS):
        e = [(e[0] + e[1]) / 2]
    centre = 1 if x == 0 else 0
    if kind == LOWPASS:
        return sinc_term(e[0], x)
    if kind == HIGHPASS:
        return centre - sinc_term(e[0], x)
    if kind in (BANDPASS, BANDSTOP):
        band = sinc_term(e[1], x) - sinc_term(e[0], x)
        return band if kind == BANDPASS else centre - band
    if x == 0:
        return mpf(0)
    if kind in (HILBERT3, HILBERT4):
        return 2 * mp.sinpi(x / 2) ** 2 / (mp.pi * x)
    return (mp.cospi(x) / x - mp.sinpi(x) / (mp.pi * x**2)) * fs


def ideal(n, kind, offset, step, fs, edges):
    count = int(mpmath.nint(mpf(n - 1) / mpf(step))) + 1
    places = [mpf(offset) + k * mpf(step) - mpf(n - 1) / 2 for k in range(count)]
    taps = [response(kind, x, edges, mpf(fs)) for x in places]
    return taps if count < 1000 else taps[:40] + taps[4980:5020]


def delay(n, beta, fraction):
    half = mpf(n - 1) / 2
    taps = []
    for k in range(n):
        x = k + 1 - mpf(fraction) - half
        u = 1 - (x / half) ** 2
        w = mpmath.besseli(0, beta * mpmath.sqrt(u)) / mpmath.besseli(0, beta) if u > 0 else mpf(0)
        taps.append(sinc_term((mpf(0.96) + mpf(0.9999)) / 2, x) * w)
    return taps


def main():
    rows = {}
    for n, kind, offset, step, fs, edges in IDEAL:
        rows[f"ideal {n} {kind} {offset} {step} {fs} {' '.join(map(str, edges))}"] = doubles(
            ideal(n, kind, offset, step, fs, edges))
    for preset, (n, beta) in enumerate(PRESETS):
        for fraction in DELAYS:
            rows[f"delay {preset} {fraction}"] = doubles(delay(n, beta, fraction))
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", rows, "fir_design")


if __name__ == "__main__":
    main()
