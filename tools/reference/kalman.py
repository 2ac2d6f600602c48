"""Reference values for tests/kalman/kalman_test.cpp: steps of Kalman filters with 50 digits.

Each row holds matrices one after the other, each as rows, columns and elements: the system, then for each step the
measurement and x, P and K after it. The extended filters run on a pendulum with x = (angle, rate), or on a linear system
with Jacobians of the noise.
"""

import random

import mpmath
from mpmath import matrix, mp, mpf

from reference_table import doubles, write

mp.dps = 50
STEPS = 3


def noise(generator, rows, cols):
    # Multiples of 1/64, so that single precision holds them exactly.
    return matrix(
        [[mpf(generator.randint(-32, 32)) / 64 for _ in range(cols)] for _ in range(rows)])


def covariance(generator, size):
    factor = noise(generator, size, size)
    return factor * factor.T + matrix(mpmath.diag([mpf(1) / 4] * size))


def flat(*matrices):
    return doubles([v for m in matrices for v in [m.rows, m.cols, *m]])


def correct(x, p, h, r, innovation):
    s = h * p * h.T + r
    k = p * h.T * s**-1
    return x + k * innovation, (mpmath.eye(x.rows) - k * h) * p, k


def linear(n, m, seed, scalar_h=None, driven=None):
    generator = random.Random(seed)
    a = noise(generator, n, n) + mpmath.eye(n)
    h = noise(generator, m, n) if scalar_h is None else mpf(scalar_h) * mpmath.eye(n)
    p, q, r = (covariance(generator, size) for size in (n, n, m))
    x = noise(generator, n, 1)
    b = {None: matrix(1, 1), "scalar": matrix([mpf(3) / 4]), "matrix": noise(generator, n, n)}[driven]
    u = noise(generator, n, 1)
    row = flat(a, matrix([scalar_h]) if scalar_h is not None else h, p, q, r, x, b, u)
    for _ in range(STEPS):
        z = noise(generator, m, 1)
        x = a * x
        if driven:
            x += (b[0, 0] if driven == "scalar" else b) * u
        p = a * p * a.T + q
        x, p, k = correct(x, p, h, r, z - h * x)
        row += flat(z, x, p, k)
    return row


def with_noise_jacobians(n, m, seed, scalar):
    """A linear system as an extended filter; Q and R have one element, or the sizes n - 1 and m + 1 of the noise."""
    generator = random.Random(seed)
    a, h = noise(generator, n, n) + mpmath.eye(n), noise(generator, m, n)
    w, v = noise(generator, n, n - 1), noise(generator, m, m + 1)
    p = covariance(generator, n)
    q = matrix([mpf(5) / 8]) if scalar else covariance(generator, n - 1)
    r = matrix([mpf(3) / 8]) if scalar else covariance(generator, m + 1)
    x = noise(generator, n, 1)
    row = flat(a, h, p, q, r, x, w, v)
    for _ in range(STEPS):
        z = noise(generator, m, 1)
        x = a * x
        p = a * p * a.T + (q[0] * w * w.T if scalar else w * q * w.T)
        x, p, k = correct(x, p, h, r[0] * v * v.T if scalar else v * r * v.T, z - h * x)
        row += flat(z, x, p, k)
    return row


def pendulum():
    """x' = rate, rate' = -sin(angle) by Euler steps of 1/16; the measurement is sin(angle)."""
    generator = random.Random(3)
    step = mpf(1) / 16
    x, p = matrix([mpf(1) / 2, mpf(0)]), mpmath.eye(2)
    q, r = matrix([[mpf(1) / 64, 0], [0, mpf(1) / 32]]), matrix([mpf(1) / 8])
    row = flat(p, q, r, x)
    for _ in range(STEPS):
        z = noise(generator, 1, 1)
        a = matrix([[1, step], [-step * mpmath.cos(x[0]), 1]])
        x = matrix([x[0] + step * x[1], x[1] - step * mpmath.sin(x[0])])
        p = a * p * a.T + q
        h = matrix([[mpmath.cos(x[0]), 0]])
        x, p, k = correct(x, p, h, r, z - matrix([mpmath.sin(x[0])]))
        row += flat(z, x, p, k)
    return row


def main():
    sizes = [(1, 1), (2, 1), (3, 2), (4, 4), (5, 1), (6, 3), (7, 2), (8, 5), (3, 6), (9, 2)]
    rows = {f"linear {n} {m}": linear(n, m, seed) for seed, (n, m) in enumerate(sizes)}
    rows |= {f"linear scalar {n}": linear(n, n, 40 + n, scalar_h=2) for n in (1, 3)}
    rows |= {f"linear driven {kind}": linear(3, 1, 60, driven=kind) for kind in ("scalar", "matrix")}
    rows |= {f"extended {n} {m} {kind}": with_noise_jacobians(n, m, 70 + n, kind == "scalar")
             for n, m in [(2, 1), (4, 3)] for kind in ("scalar", "matrix")}
    rows["pendulum"] = pendulum()
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", rows, "kalman")


if __name__ == "__main__":
    main()
