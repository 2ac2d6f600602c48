"""Reference values for tests/vector_core/levinson_test.cpp: the Yule-Walker equations solved as a linear system, 50 digits.

Complex numbers stand as pairs of real and imaginary parts."""

import random

import mpmath
from mpmath import mp

from reference_table import doubles, write

mp.dps = 50
source = random.Random(4)


def autocorrelation(samples, lags):
    n = len(samples)
    return [sum(samples[i + k] * mpmath.conj(samples[i]) for i in range(n - k)) / n for k in range(lags + 1)]


def predictor(r):
    """The coefficients, the error power and the last coefficient of the predictor of every order."""
    p = len(r) - 1
    at = lambda k: r[k] if k >= 0 else mpmath.conj(r[-k])
    reflection = []
    for order in range(1, p + 1):
        system = mpmath.matrix([[at(i - j) for j in range(order)] for i in range(order)])
        a = mpmath.lu_solve(system, mpmath.matrix([-r[k] for k in range(1, order + 1)]))
        reflection.append(a[order - 1])
    error = r[0] + sum(a[k] * at(-k - 1) for k in range(p))
    return [mpmath.mpf(1)] + list(a), error, reflection


def parts(values, cplx):
    values = [mpmath.mpmathify(v) for v in values]
    return [part for v in values for part in ((v.real, v.imag) if cplx else (v.real,))]


def main():
    rows = {}
    for cplx in (False, True):
        kind = "complex" if cplx else "real"
        number = lambda: mpmath.mpf(source.randrange(-64, 64)) / 64
        samples = [mpmath.mpc(number(), number()) if cplx else number() for _ in range(48)]
        r = [mpmath.mpc(float(v.real), float(v.imag)) for v in map(mpmath.mpmathify, autocorrelation(samples, 20))]
        a, error, reflection = predictor(r)
        rows[f"{kind}.r"] = parts(r, cplx)
        rows[f"{kind}.a"] = parts(a, cplx)
        rows[f"{kind}.error"] = [mpmath.re(error)]
        rows[f"{kind}.reflection"] = parts(reflection, cplx)
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", {k: doubles(v) for k, v in rows.items()})


if __name__ == "__main__":
    main()
