"""Writes samples of sine tones and triangle waves far into their streams, in 60-digit arithmetic.

"tone" is a list of frequency, phase, n, and cosine, sine and remainder of 2 pi frequency n + phase, all numbers as the doubles
that they are; "triangle" one of frequency, phase, asymmetry, n, T and T a quarter later, T being 1 at 0 and -1 at
pi + asymmetry.
"""
import itertools

import mpmath
from mpmath import mp, mpf

import reference_table

mp.dps = 60
FREQUENCIES = (0.1, 0.25, 0.4999, 0.12345678901234558, 1 / 3, 1e-9, 0.5, 0.0)
PLACES = (0, 1, 63, 64, 12345, 10**8 - 1, 10**8, 864 * 10**8, 2**50 - 1)
PHASES = (0.0, 1.0, 4.71238898038469, 6.283185307179585)


def phase_of(frequency, phase, n):
    return mpmath.fmod(2 * mp.pi * mpf(frequency) * n + mpf(phase), 2 * mp.pi)


def triangle(alpha, asymmetry):
    alpha, knee = mpmath.fmod(alpha, 2 * mp.pi), mp.pi + mpf(asymmetry)
    alpha = alpha + 2 * mp.pi if alpha < 0 else alpha
    return 1 - 2 * alpha / knee if alpha <= knee else 1 - 2 * (2 * mp.pi - alpha) / (2 * mp.pi - knee)


tones, triangles = [], []
for i, (frequency, n) in enumerate(itertools.product(FREQUENCIES, PLACES)):
    phase = PHASES[i % len(PHASES)]
    alpha = phase_of(frequency, phase, n)
    tones += frequency, phase, n, mpmath.cos(alpha), mpmath.sin(alpha), alpha
for i, (frequency, asymmetry) in enumerate(itertools.product((0.1, 0.03173828125, 0.4999), (0.0, 1.0, -2.5, 3.0))):
    for n in (0, 5, 100, 10**9):
        phase = PHASES[(i + n) % len(PHASES)]
        alpha = phase_of(frequency, phase, n)
        triangles += frequency, phase, asymmetry, n, triangle(alpha, asymmetry), triangle(alpha - mp.pi / 2, asymmetry)
rows = {"tone": reference_table.doubles(tones), "triangle": reference_table.doubles(triangles)}
reference_table.write(__file__, f"mpmath {mpmath.__version__}", rows, "primitives")
