"""Reference values for tests/vector_core/elliptic_test.cpp with 50 digits."""

import mpmath
from mpmath import mp

from reference_table import doubles, write

mp.dps = 50

PARAMETERS = [-1e6, -3.0, -0.1, 0.0, 1e-12, 0.1, 0.5, 0.9, 0.99999, 1 - 1e-10, 1 - 2.0**-53]
ARGUMENTS = [1e-3, 0.3, 1.0, 1.5, 3.0, 7.5, -2.0, 18.0]


def main():
    rows = {"complete": [], "jacobi": []}
    for m in map(mpmath.mpf, PARAMETERS):
        rows["complete"] += [m, mpmath.ellipk(m), mpmath.ellipe(m)]
        for u in map(mpmath.mpf, ARGUMENTS):
            rows["jacobi"] += [u, m] + [mpmath.ellipfun(kind, u, m=m).real for kind in ("sn", "cn", "dn")]
        quarter = mpmath.mpf(float(mpmath.ellipk(m)))  # cn is small here
        rows["jacobi"] += [quarter, m] + [mpmath.ellipfun(kind, quarter, m=m).real for kind in ("sn", "cn", "dn")]
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", {k: doubles(v) for k, v in rows.items()})


if __name__ == "__main__":
    main()
