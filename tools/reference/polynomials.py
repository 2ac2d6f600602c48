"""Reference values for tests/vector_core/polynomials_test.cpp: roots and coefficients with 50 and more digits."""

import mpmath

from reference_table import doubles, write

mpmath.mp.dps = 120


def rounded(values):
    """The values as the library gets them: rounded to double, then exact."""
    return [mpmath.mpf(float(v)) for v in values]


def from_roots(roots):
    p = [mpmath.mpf(1)]
    for r in roots:
        p = [a - r * b for a, b in zip(p + [mpmath.mpf(0)], [mpmath.mpf(0)] + p)]
    return p


def roots_of(p):
    """Roots of real coefficients, sorted, as pairs of real and imaginary parts. Zeros at both ends are not treated."""
    scale = (abs(p[-1] / p[0])) ** (mpmath.mpf(1) / (len(p) - 1))
    scaled = [c * scale ** (len(p) - 1 - i) for i, c in enumerate(p)]
    found = mpmath.polyroots(scaled, maxsteps=2000, extraprec=2000)
    found = [r * scale for r in found]
    found = [mpmath.mpc(r.real, 0 if abs(r.imag) < abs(r) * mpmath.mpf(10) ** -80 else r.imag) for r in found]
    return sorted(found, key=lambda r: (r.real, r.imag))


def chebyshev(n):
    before, p = [1], [1, 0]
    for _ in range(n - 1):
        before, p = p, [2 * a - b for a, b in zip(p + [0], [0, 0] + before)]
    return p


def reverse_bessel(n):
    before, p = [1], [1, 1]
    for k in range(2, n + 1):
        before, p = p, [a + (2 * k - 1) * b for a, b in zip(before + [0, 0], [0] + p)]
    return p


def on_circles(n, radii):
    """Conjugate pairs at even angles, n in all, going through the radii."""
    roots = []
    for k in range(n // 2):
        r = mpmath.mpf(radii[k % len(radii)])
        z = r * mpmath.expjpi(mpmath.mpf(2 * k + 1) / n)
        roots += [z, z.conjugate()]
    return roots


def real_parts(values):
    return [v.real for v in map(mpmath.mpmathify, values)]


def main():
    polynomials = {
        "wilkinson20": from_roots(range(1, 21)),
        "chebyshev40": chebyshev(40),
        "bessel30": reverse_bessel(30),
        "circle100": real_parts(from_roots(on_circles(100, ["0.9"]))),
        "circles60": real_parts(from_roots(on_circles(60, ["0.5", "1", "2"]))),
        "magnitudes": from_roots([mpmath.mpf(10) ** k for k in range(-12, 13, 2)]),
        "exponential50": [1 / mpmath.factorial(50 - k) for k in range(51)],
        "near_double": [1, -2, mpmath.mpf(1) + mpmath.mpf(2) ** -50, 0.5],
    }
    rows = {}
    for name, p in polynomials.items():
        given = rounded(p)
        rows[name + ".p"] = given
        rows[name + ".roots"] = [part for r in roots_of(given) for part in (r.real, r.imag)]

    # Coefficients from roots that are given as doubles.
    given = [mpmath.mpc(float(z.real), float(z.imag)) for z in on_circles(100, ["0.9", "1.1"])]
    rows["coefficients.roots"] = [part for z in given for part in (z.real, z.imag)]
    rows["coefficients.p"] = real_parts(from_roots(given))

    # Values next to a multiple root, where plain evaluation has no correct digit.
    p = rounded(from_roots([1] * 7))
    points = rounded([0.99, 0.995, 1.0, 1.004, 1.01])
    rows["values.p"] = p
    rows["values.x"] = points
    rows["values.y"] = [mpmath.polyval(p, x) for x in points]
    write(__file__, f"mpmath {mpmath.__version__}, {mpmath.mp.dps} digits", {k: doubles(v) for k, v in rows.items()})


if __name__ == "__main__":
    main()
