"""Reference values for tests/iir_design/analog_prototypes_test.cpp with 60 digits.

One row for each prototype: gain, the number of zeros, then zeros and poles as pairs of numbers in the order in which the
library stores them.
"""

import mpmath
from mpmath import mp, mpc, mpf

import iir_filters
from reference_table import doubles, write

mp.dps = 60

ORDERS = [1, 2, 3, 4, 5, 6, 7, 8, 11, 16, 25, 31, 40, 49, 50]
# Usual ones, bands of nearly the same loss (the modulus is close to 1), and the deepest stop band that is accepted.
LOSSES = [(0.5, 60), (3, 3.5), (0.01, 120), (1e-4, 20)]


def in_pairs(poles, upper_first):
    """Each pole next to its conjugate; `poles` are those of the upper half plane and the real one."""
    rows = []
    for pole in poles:
        pair = [pole, mpmath.conj(pole)]
        rows += [mpc(pole.real)] if abs(pole.imag) < mpf(10) ** -40 else pair if upper_first else pair[::-1]
    return rows


def prototype(family, order):
    zeros, poles, k = getattr(iir_filters, family)(order)
    if family == "butterworth":
        poles = in_pairs([p for p in poles if p.imag > mpf(10) ** -40], True) + ([mpc(-1)] if order % 2 else [])
    elif family == "bessel":
        poles = in_pairs(sorted((p for p in poles if p.imag > -mpf(10) ** -40), key=lambda p: p.imag), True)
    elif family == "chebyshev2" and order % 2 == 1:
        zeros = in_pairs([z for z in zeros if z.imag > 0], True)
    elif family == "elliptic":  # the program stores the lower pole of a pair first
        poles = in_pairs([p if p.imag == 0 else mpmath.conj(p) if p.imag < 0 else p for p in poles[order % 2::2]], False)
        poles = ([mpc(iir_filters.elliptic(order)[1][0].real)] if order % 2 else []) + poles
    return zeros, poles, k


def flat(roots):
    tiny = mpf(10) ** (20 - mp.dps)
    return [part if abs(part) > tiny else mpf(0) for root in roots for part in (root.real, root.imag)]


def main():
    rows = {}
    for family in iir_filters.FAMILIES:
        losses = {"butterworth": LOSSES[:1], "bessel": LOSSES[:1], "chebyshev1": LOSSES[:3], "chebyshev2": LOSSES[:3],
                  "elliptic": LOSSES}[family]
        for ripple, attenuation in losses:
            iir_filters.RIPPLE, iir_filters.ATTENUATION = mpf(ripple), mpf(attenuation)
            for order in ORDERS:
                with mpmath.workdps(400 if ripple == 3 else mp.dps):  # 1 - modulus down to 1e-200
                    zeros, poles, k = prototype(family, order)
                    numbers = [k, len(zeros), *flat(zeros), *flat(poles)]
                rows[f"{family} {order} {ripple} {attenuation}"] = doubles(numbers)
    write(__file__, f"mpmath {mpmath.__version__}, {mp.dps} digits", rows, "iir_design")


if __name__ == "__main__":
    main()
