// Sums of cosines with twice the digits of double.
#pragma once

#include <cstdint>

#include "passband/primitives/places.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// hi[i] + lo[i] = sum of (alpha_hi[k] + alpha_lo[k]) cos(k t[i]), k = 0 .. count - 1, where cos(t[i]) is the place
/// points.hi[i] + points.lo[i].
///
/// Clenshaw's recurrence with the error of each step carried along: the result is as if computed with some 100 bits.
/// Cost: about 20 operations for each point and coefficient, several points side by side.
/// Fails with BadSize (count < 1), NullPointer.
/// Literature: Jiang, Barrio, Li, Liao, Cheng, Su, "Accurate evaluation of a polynomial in Chebyshev form", Applied
/// Mathematics and Computation 217, 2011.
Status CosineSums(const double* alpha_hi, const double* alpha_lo, std::int32_t count, Places points, double* hi,
                  double* lo) noexcept;

}  // namespace passband::primitives
