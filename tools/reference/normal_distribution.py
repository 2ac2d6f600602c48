"""Reference values for tests/vector_core/normal_distribution_test.cpp with 50 digits."""

import mpmath
from mpmath import mp

from reference_table import doubles, write

mp.dps = 50

CASES = [(x, 0.0, 1.0) for x in (-38.0, -37.3, -30.1, -12.3, -8.0, -5.2, -1.0, -0.1, 0.0, 0.3, 1.7, 6.0, 40.0)]
CASES += [(1.1, 7.3, 0.3), (-1e10, 1e10, 1e9), (1e-300, 0.0, 1e-301), (3.0, 3.0000001, 1e-8), (-36.7, 0.1, 1.1)]


def main():
    rows = {"cases": []}
    for case in CASES:
        x, mean, deviation = map(mpmath.mpf, case)
        t = (x - mean) / deviation
        cdf = mpmath.erfc(-t / mpmath.sqrt(2)) / 2
        pdf = mpmath.exp(-t * t / 2) / (deviation * mpmath.sqrt(2 * mpmath.pi))
        rows["cases"] += [x, mean, deviation, cdf, pdf]
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", {k: doubles(v) for k, v in rows.items()})


if __name__ == "__main__":
    main()
