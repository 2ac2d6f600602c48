"""Reference values for tests/iir_design/iir_filters_test.cpp with 60 digits.

One row for each design: gain, then the response at the cut-offs, then zeros and poles of the upper half plane and the
real axis as pairs of numbers. The chain is prototype, analog band mapping, bilinear transform, all on zeros and poles.
"""

import mpmath
from mpmath import mp, mpc, mpf

from reference_table import doubles, write

mp.dps = 60

FAMILIES = ["butterworth", "chebyshev1", "chebyshev2", "elliptic", "bessel"]
ORDERS = [1, 2, 5, 10, 20, 21, 50]
RIPPLE = mpf("0.5")
ATTENUATION = mpf(60)
BANDS = {"lowpass": [0.3], "highpass": [0.6], "bandpass": [0.2, 0.4], "bandstop": [0.25, 0.5]}
# Cut-offs near the ends of the axis and bands as narrow as they are used.
EXTREMES = [(family, kind, order, edges)
            for family in FAMILIES
            for kind, order, edges in [("lowpass", 8, [0.001]), ("highpass", 8, [0.999]), ("bandpass", 6, [0.5, 0.501]),
                                       ("bandpass", 5, [0.0001, 0.9]), ("bandstop", 7, [0.001, 0.002])]]


def excess(decibels):
    return mpmath.expm1(decibels / 10 * mpmath.log(10))


def angles(order):
    return [mpmath.pi * (2 * i - 1) / (2 * order) + mpmath.pi / 2 for i in range(1, order + 1)]


def butterworth(order):
    return [], [mpmath.expj(a) for a in angles(order)], mpf(1)


def chebyshev1(order):
    eps = mpmath.sqrt(excess(RIPPLE))
    mu = mpmath.asinh(1 / eps) / order
    poles = [mpc(mpmath.sinh(mu) * mpmath.cos(a), mpmath.cosh(mu) * mpmath.sin(a)) for a in angles(order)]
    return [], poles, unit_gain([], poles) / (mpmath.sqrt(1 + eps**2) if order % 2 == 0 else 1)


def chebyshev2(order):
    mu = mpmath.asinh(mpmath.sqrt(excess(ATTENUATION))) / order
    zeros = [1j / mpmath.cos((2 * i - 1) * mpmath.pi / (2 * order)) for i in range(1, order + 1) if 2 * i - 1 != order]
    poles = [1 / mpc(mpmath.sinh(mu) * mpmath.cos(a), mpmath.cosh(mu) * mpmath.sin(a)) for a in angles(order)]
    return zeros, poles, unit_gain(zeros, poles)


def elliptic(order):
    """Zeros and poles by Jacobi's functions: the degree equation through the nome, the pole shift through arcsc."""
    eps = mpmath.sqrt(excess(RIPPLE))
    if order == 1:
        return [], [mpc(-1 / eps)], 1 / eps
    m1 = excess(RIPPLE) / excess(ATTENUATION)
    ratio = mpmath.ellipk(1 - m1) / mpmath.ellipk(m1)
    m = mpmath.mfrom(q=mpmath.exp(-mpmath.pi * ratio / order))
    k = mpmath.ellipk(m)
    # sc(r | 1 - m1) = 1 / eps: r is an incomplete integral of the first kind.
    r = mpmath.ellipf(mpmath.atan(1 / eps), 1 - m1)
    v0 = k * r / (order * mpmath.ellipk(m1))
    sn, cn, dn = ("sn", "cn", "dn")
    sv, cv, dv = (mpmath.ellipfun(f, v0, m=1 - m).real for f in (sn, cn, dn))
    zeros, poles = [], []
    for j in range(1 - order % 2, order, 2):
        s, c, d = (mpmath.ellipfun(f, j * k / order, m=m).real for f in (sn, cn, dn))
        below = 1 - (d * sv) ** 2
        pole = mpc(-c * d * sv * cv / below, -s * dv / below)
        if j == 0:
            poles.append(mpc(pole.real))
            continue
        zeros += [1j / (mpmath.sqrt(m) * s), -1j / (mpmath.sqrt(m) * s)]
        poles += [pole, mpmath.conj(pole)]
    return zeros, poles, unit_gain(zeros, poles) / (mpmath.sqrt(1 + eps**2) if order % 2 == 0 else 1)


def bessel(order):
    """theta_N(s) = sum (2N - k)! / (2^(N - k) k! (N - k)!) s^k, its roots scaled to the asymptote 1 / s^N."""
    n, f = order, mpmath.factorial
    coefficients = [f(2 * n - k) / (mpf(2) ** (n - k) * f(k) * f(n - k)) for k in range(n, -1, -1)]
    with mpmath.workdps(4 * order + 60):
        roots = mpmath.polyroots(coefficients, maxsteps=2000, extraprec=800)
    scale = mpmath.root(coefficients[-1], n)
    return [], [root / scale for root in roots], mpf(1)


def unit_gain(zeros, poles):
    return (mpmath.fprod(-p for p in poles) / mpmath.fprod(-z for z in zeros)).real


def images(x, centre, width):
    """Both solutions of s^2 - width x s + centre^2 = 0."""
    half = width * x / 2
    root = mpmath.sqrt(half**2 - centre**2)
    return [half + root, half - root]


def to_band(kind, edges, zeros, poles, k):
    w = [4 * mpmath.tan(mpmath.pi * mpf(e) / 2) for e in edges]
    excess_poles = len(poles) - len(zeros)
    if kind == "lowpass":
        return [x * w[0] for x in zeros], [x * w[0] for x in poles], k * w[0] ** excess_poles
    if kind == "highpass":
        k *= (mpmath.fprod(-z for z in zeros) / mpmath.fprod(-p for p in poles)).real
        return [w[0] / x for x in zeros] + [mpc(0)] * excess_poles, [w[0] / x for x in poles], k
    centre, width = mpmath.sqrt(w[0] * w[1]), w[1] - w[0]
    if kind == "bandpass":
        map_all = lambda roots: [y for x in roots for y in images(x, centre, width)]
        return map_all(zeros) + [mpc(0)] * excess_poles, map_all(poles), k * width**excess_poles
    map_all = lambda roots: [y for x in roots for y in images(1 / x, centre, width)]
    return map_all(zeros) + [mpc(0, centre), mpc(0, -centre)] * excess_poles, map_all(poles), mpf(1)


def design(family, kind, order, edges):
    zeros, poles, k = to_band(kind, edges, *globals()[family](order))
    k *= (mpmath.fprod(4 - z for z in zeros) / mpmath.fprod(4 - p for p in poles)).real
    bilinear = lambda x: (4 + x) / (4 - x)
    zeros, poles = [bilinear(z) for z in zeros] + [mpc(-1)] * (len(poles) - len(zeros)), [bilinear(p) for p in poles]
    if kind == "bandstop":
        k = (mpmath.fprod(1 - p for p in poles) / mpmath.fprod(1 - z for z in zeros)).real
    return zeros, poles, k


def response(zeros, poles, k, frequency):
    z = mpmath.expj(mpmath.pi * mpf(frequency))
    return abs(k * mpmath.fprod(z - x for x in zeros) / mpmath.fprod(z - x for x in poles))


def upper(roots):
    tiny = mpf(10) ** -40
    kept = [x for x in roots if x.imag > -tiny]
    return [part for x in kept for part in (x.real, x.imag if abs(x.imag) > tiny else mpf(0))]


def row(family, kind, order, edges):
    zeros, poles, k = design(family, kind, order, edges)
    gains = [response(zeros, poles, k, e) for e in edges]
    z, p = upper(zeros), upper(poles)
    return doubles([k, *gains, len(z) // 2, len(p) // 2, *z, *p])


def main():
    rows = {}
    cases = [(family, kind, order, edges) for family in FAMILIES for kind, edges in BANDS.items() for order in ORDERS]
    for family, kind, order, edges in cases + EXTREMES:
        name = f"{family} {kind} {order} {' '.join(map(str, edges))}"
        rows[name] = row(family, kind, order, edges)
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", rows, "iir_design")


if __name__ == "__main__":
    main()
