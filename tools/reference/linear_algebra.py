"""Reference values for tests/vector_core/linear_algebra_test.cpp: systems, least squares and eigenvalues with 50 digits.

Complex numbers stand as pairs of real and imaginary parts, matrices row by row."""

import random

import mpmath
from mpmath import mp

from reference_table import doubles, write

mp.dps = 50
source = random.Random(20)


def uniform():
    return mpmath.mpf(source.randrange(-2**20, 2**20)) / 2**19  # exact in single precision too


def matrix(rows, cols, cplx):
    return mpmath.matrix([[mpmath.mpc(uniform(), uniform()) if cplx else uniform() for _ in range(cols)]
                          for _ in range(rows)])


def flat(values, cplx):
    parts = []
    for v in values:
        v = mpmath.mpmathify(v)
        parts += [v.real, v.imag] if cplx else [v.real]
    return parts


def elements(m, cplx):
    return flat([m[i, j] for i in range(m.rows) for j in range(m.cols)], cplx)


def least_norm(a, b):
    """The least-squares solution of the least norm through the singular values."""
    u, s, v = mpmath.svd(a)
    x = mpmath.zeros(a.cols, b.cols)
    for k in range(len(s)):
        if s[k] > s[0] * mpmath.mpf(10) ** -30:
            x += v[k, :].H * (u[:, k].H * b) / s[k]
    return x


def main():
    rows = {}
    for cplx in (False, True):
        kind = "complex" if cplx else "real"
        a, b = matrix(6, 6, cplx), matrix(6, 2, cplx)
        rows[f"{kind}.a"] = elements(a, cplx)
        rows[f"{kind}.b"] = elements(b, cplx)
        rows[f"{kind}.x"] = elements(mpmath.lu_solve(a, b[:, 0]), cplx)
        rows[f"{kind}.x_transposed"] = elements(mpmath.lu_solve(a.T, b[:, 0]), cplx)
        rows[f"{kind}.x_adjoint"] = elements(mpmath.lu_solve(a.H, b[:, 0]), cplx)
        rows[f"{kind}.inverse"] = elements(a**-1, cplx)
        rows[f"{kind}.eigenvalues"] = flat(mpmath.eig(a, left=False, right=False), True)
        symmetric = a + a.H
        rows[f"{kind}.hermitian_eigenvalues"] = sorted(mpmath.eigh(symmetric, eigvals_only=True))

        tall, wide = matrix(7, 4, cplx), matrix(4, 7, cplx)
        deficient = matrix(7, 2, cplx) * matrix(2, 4, cplx)  # rank 2, rounded: the products have 42 bits
        for name, m in (("tall", tall), ("wide", wide), ("deficient", deficient)):
            right = matrix(m.rows, 2, cplx)
            rows[f"{kind}.{name}.a"] = elements(m, cplx)
            rows[f"{kind}.{name}.b"] = elements(right, cplx)
            rows[f"{kind}.{name}.x"] = elements(least_norm(m, right), cplx)

    # Elements of very different size, which a routine without balancing does not survive: D A D^-1 with powers of 4^k.
    a = matrix(6, 6, False)
    graded = mpmath.matrix(6, 6)
    for i in range(6):
        for j in range(6):
            graded[i, j] = a[i, j] * mpmath.mpf(2) ** (10 * ((i * 5) % 6 - (j * 5) % 6))
    rows["graded.a"] = elements(graded, False)
    rows["graded.eigenvalues"] = flat(mpmath.eig(a, left=False, right=False), True)

    # The Hilbert matrix of order 10 (condition 1.6e13) as it is in double precision.
    hilbert = mpmath.matrix([[mpmath.mpf(1.0 / (i + j + 1)) for j in range(10)] for i in range(10)])
    rows["hilbert.x"] = elements(mpmath.lu_solve(hilbert, mpmath.matrix([1] * 10)), False)
    # A polynomial of order 8 at -5500, -4500 .. 5500: columns from 1 to 1e30, harmless once they are scaled.
    mp.dps = 150  # the normal equations square the condition number
    vandermonde = mpmath.matrix([[mpmath.mpf(-5500 + 1000 * i) ** j for j in range(9)] for i in range(12)])
    vandermonde = vandermonde.apply(lambda v: mpmath.mpf(float(v)))
    values = mpmath.matrix([(-1) ** i + i for i in range(12)])
    rows["vandermonde.a"] = elements(vandermonde, False)
    rows["vandermonde.b"] = elements(values, False)
    rows["vandermonde.x"] = elements(mpmath.lu_solve(vandermonde, values), False)
    mp.dps = 50
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", {k: doubles(v) for k, v in rows.items()})


if __name__ == "__main__":
    main()
