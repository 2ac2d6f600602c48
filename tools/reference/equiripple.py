"""Reference values for tests/fir_design/equiripple_test.cpp: minimax designs on their frequency grids in 40 digits.

A row "type taps density fixed fs bands edges.. gains.. weights.." holds the deviation and the taps. Each design is found by an
exchange that solves its linear equations as they stand and looks at every grid point, so that it shares neither the
interpolation nor the search with the library. Grids are computed in double, as the library defines them.
"""

import math

from mpmath import cos, lu_solve, matrix, mp, mpf, pi, sin

from reference_table import doubles, write

mp.dps = 40

POWERS = [0, 1, 0, -1, 2, -2]  # band pass, differentiator, Hilbert, integrator, double differentiator, double integrator
NEGATED = [False, False, True, True, False, True]

CASES = [  # type, taps, density, fixed weights, fs, edges, gains, weights
    (0, 24, 16, 0, 1.0, [0, 0.08, 0.16, 0.5], [1, 0], [1, 1]),
    (0, 3, 16, 0, 2.0, [0, 0.4, 0.6, 1.0], [1, 0], [1, 1]),
    (0, 31, 16, 0, 1.0, [0, 0.1, 0.2, 0.35, 0.425, 0.5], [0, 1, 0], [10, 1, 10]),
    (0, 30, 32, 0, 48000.0, [0, 4000, 6000, 9000, 11000, 21000], [1, 0.25, -0.5], [1, 3, 0.7]),
    (0, 33, 64, 0, 1.0, [0, 0.1, 0.3, 0.5], [1, 0], [1, 1]),
    (0, 26, 16, 0, 1.0, [0.05, 0.2, 0.3, 0.5], [1, 0], [1, 1e4]),
    (1, 31, 16, 0, 1.0, [0, 0.45], [1], [1]),
    (1, 32, 16, 0, 2.0, [0, 1.0], [1.5], [2]),
    (1, 21, 16, 1, 1.0, [0.06, 0.43], [1], [1]),
    (2, 3, 16, 0, 1.0, [0.1, 0.4], [1.5], [2]),
    (2, 5, 8, 0, 1.0, [0.1, 0.4], [1], [1]),
    (2, 31, 16, 0, 1.0, [0.05, 0.45], [1], [1]),
    (2, 20, 100, 0, 8000.0, [200, 1800, 2200, 4000], [1, 2], [1, 0.5]),
    (3, 23, 16, 0, 48000.0, [2000, 20000], [1], [1]),
    (3, 4, 16, 0, 1.0, [0, 0.5], [1], [1]),
    (3, 24, 16, 1, 1.0, [0.03, 0.5], [1], [1]),
    (4, 25, 16, 0, 1.0, [0.02, 0.44], [1], [1]),
    (4, 22, 256, 0, 1.0, [0, 0.5], [1], [3]),
    (5, 27, 16, 0, 1.0, [0.05, 0.44], [1], [1]),
    (5, 28, 4, 0, 2.0, [0.1, 1.0], [0.5], [1]),
]


def grid_of(kind, taps, density, fixed, fs, edges, gains, weights):
    """Frequencies in cycles per sample with desired amplitudes and weights."""
    edges = [e / fs for e in edges]
    spacing = 0.5 / (density * (taps // 2))
    if kind != 0:
        edges[0] = max(edges[0], spacing)
        if taps % 2 == 1:
            edges[-1] = min(edges[-1], 0.5 - spacing)
    points = []
    for j, gain in enumerate(gains):
        low, high = edges[2 * j], edges[2 * j + 1]
        count = math.trunc((high - low) / spacing)
        step = (high - low) / (count - 1)
        for i in range(count):
            f = mpf(high if i + 1 == count else low + step * i)
            desired = mpf(gain) * (2 * pi * mpf(fs) * f) ** POWERS[kind]
            shaped = not fixed and f > mpf(1e-6)
            points.append((f, desired, mpf(weights[j]) * (f ** -POWERS[kind] if shaped else 1)))
    return points


def basis(kind, taps):
    """The functions of f that multiply the taps from the middle outwards."""
    half, odd = taps // 2, taps % 2 == 1
    if kind == 0 and odd:
        return [lambda f: mpf(1)] + [lambda f, k=k: 2 * cos(2 * pi * k * f) for k in range(1, half + 1)]
    if kind == 0:
        return [lambda f, k=k: 2 * cos(2 * pi * (k + mpf(1) / 2) * f) for k in range(half)]
    if odd:
        return [lambda f, k=k: 2 * sin(2 * pi * k * f) for k in range(1, half + 1)]
    return [lambda f, k=k: 2 * sin(2 * pi * (k + mpf(1) / 2) * f) for k in range(half)]


def exchange(functions, points):
    """Coefficients and deviation of the best approximation."""
    count = len(functions)
    values = [[function(f) for function in functions] for f, _, _ in points]
    nodes = [round(j * (len(points) - 1) / count) for j in range(count + 1)]
    for _ in range(100):
        a = matrix(count + 1, count + 1)
        b = matrix(count + 1, 1)
        for row, p in enumerate(nodes):
            for k in range(count):
                a[row, k] = values[p][k]
            a[row, count] = (-1) ** row / points[p][2]
            b[row] = points[p][1]
        solution = lu_solve(a, b)
        deviation = abs(solution[count])
        errors = [w * (d - sum(values[i][k] * solution[k] for k in range(count))) for i, (_, d, w) in enumerate(points)]
        if max(abs(e) for e in errors) <= deviation * (1 + mpf(10) ** -25):
            return list(solution[:count]), deviation
        extrema = []
        for i, e in enumerate(errors):
            if extrema and (e > 0) == (errors[extrema[-1]] > 0):
                if abs(e) > abs(errors[extrema[-1]]):
                    extrema[-1] = i
            else:
                extrema.append(i)
        while len(extrema) > count + 1:
            size = [abs(errors[i]) for i in extrema]
            least = size.index(min(size))
            if len(extrema) == count + 2 or least in (0, len(extrema) - 1):
                extrema.pop(0 if size[0] < size[-1] else -1)
            else:
                other = least - 1 if size[least - 1] < size[least + 1] else least + 1
                for i in sorted((least, other), reverse=True):
                    extrema.pop(i)
        nodes = extrema
    raise RuntimeError("the exchange does not converge")


def design(case):
    kind, taps = case[0], case[1]
    coefficients, deviation = exchange(basis(kind, taps), grid_of(*case))
    half = coefficients[1:] if kind == 0 and taps % 2 == 1 else coefficients
    middle = [coefficients[0]] if kind == 0 and taps % 2 == 1 else [mpf(0)] * (taps % 2)
    sign = -1 if NEGATED[kind] else 1
    left = [sign * h for h in reversed(half)]
    return deviation, left + middle + [h if kind == 0 else -h for h in reversed(left)]


def main():
    rows = {}
    for case in CASES:
        kind, taps, density, fixed, fs, edges, gains, weights = case
        numbers = " ".join(repr(float(x)) for x in [*edges, *gains, *weights])
        deviation, impulse = design(case)
        rows[f"{kind} {taps} {density} {fixed} {fs!r} {len(gains)} {numbers}"] = doubles([deviation, *impulse])
    write(__file__, "mpmath 1.2.1 at 40 digits", rows, "fir_design")


if __name__ == "__main__":
    main()
