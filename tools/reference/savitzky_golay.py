"""Reference values for tests/fir_design/savitzky_golay_test.cpp: weighted least-squares fits in exact rational numbers.

Rows "smooth F P w" hold the middle row of the projection, "edge F P w" its first row, "slope F P w" the row of x^1; w = 0
are equal weights, w = 1 the weights 1 + (5 j mod 7) / 4 at place j.
"""

from fractions import Fraction

from reference_table import doubles, write

CASES = [(5, 2, 0), (5, 0, 0), (7, 6, 0), (11, 3, 0), (11, 4, 1), (41, 12, 0), (41, 12, 1), (101, 20, 0), (31, 29, 1), (1, 0, 1)]


def solve(a, b):
    """Gauss-Jordan elimination."""
    n = len(a)
    rows = [list(a[i]) + list(b[i]) for i in range(n)]
    for k in range(n):
        pivot = next(i for i in range(k, n) if rows[i][k] != 0)
        rows[k], rows[pivot] = rows[pivot], rows[k]
        rows[k] = [x / rows[k][k] for x in rows[k]]
        for i in range(n):
            if i != k and rows[i][k] != 0:
                rows[i] = [x - rows[i][k] * y for x, y in zip(rows[i], rows[k])]
    return [row[n:] for row in rows]


def fit(frame, order, weighted):
    """Rows of coefficients of x^k for every place of the frame, and the places."""
    x = [Fraction(j - frame // 2) for j in range(frame)]
    w = [1 + Fraction(5 * j % 7, 4) if weighted else Fraction(1) for j in range(frame)]
    m = [[v**i for v in x] for i in range(order + 1)]
    g = [[sum(a * b * c for a, b, c in zip(m[i], m[k], w)) for k in range(order + 1)] for i in range(order + 1)]
    return solve(g, [[a * b for a, b in zip(row, w)] for row in m]), x


def main():
    rows = {}
    for frame, order, weighted in CASES:
        coefficients, x = fit(frame, order, weighted)
        row_at = lambda place: [sum(c[j] * place**k for k, c in enumerate(coefficients)) for j in range(frame)]
        name = f"{frame} {order} {weighted}"
        rows[f"smooth {name}"] = doubles(row_at(x[frame // 2]))
        rows[f"edge {name}"] = doubles(row_at(x[0]))
        if order > 0:
            rows[f"slope {name}"] = doubles(coefficients[1])
    write(__file__, "Python's fractions", rows, "fir_design")


if __name__ == "__main__":
    main()
