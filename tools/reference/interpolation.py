"""Reference values for tests/vector_core/interpolation_test.cpp: SciPy's not-a-knot spline, and linear interpolation."""

import numpy
import scipy
from scipy.interpolate import CubicSpline, interp1d

from reference_table import doubles, write

KNOTS = numpy.array([-2.0, -1.5, 0.0, 0.25, 1.0, 3.0, 3.5, 6.0])
VALUES = numpy.array([1.0, -1.0, 0.5, 2.0, 1.5, -3.0, 0.0, 4.0])
POINTS = numpy.array([-3.0, -2.0, -1.75, -1.0, 0.1, 0.5, 2.0, 3.25, 5.0, 6.0, 7.5])


def main():
    rows = {"x": KNOTS, "y": VALUES, "at": POINTS}
    rows["linear"] = interp1d(KNOTS, VALUES, fill_value="extrapolate")(POINTS)
    rows["cubic"] = CubicSpline(KNOTS, VALUES, bc_type="not-a-knot")(POINTS)
    for count in (2, 3, 4, 5):
        rows[f"cubic{count}"] = CubicSpline(KNOTS[:count], VALUES[:count], bc_type="not-a-knot")(POINTS)
    write(__file__, f"SciPy {scipy.__version__}", {k: doubles(v) for k, v in rows.items()})


if __name__ == "__main__":
    main()
