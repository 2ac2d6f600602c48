// Windows that are generated while they are applied: sums of up to three cosine terms, and the triangle.
//
// A cosine-sum window with the denominator D, w[n] = a0 - a1 cos(2 pi n / D) + a2 cos(4 pi n / D), is a polynomial in
// s = sin(pi n / D)^2, because cos 2t = 1 - 2 sin(t)^2. In that form nothing cancels next to the ends, where s is
// small:
//
//   w[n] = c0 + c1 s + c2 s^2,   c0 = a0 - a1 + a2,   c1 = 2 a1 - 8 a2,   c2 = 8 a2.
//
// Every s, or in long windows the s at the start of every block of 64, is computed on its own, so that nothing drifts:
// the error of s is below 2.5e-16 at every length, below 1e-14 s everywhere, and a few units in the last place for n <
// D / 32.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// w = c0 + c1 s + c2 s^2 with s = sin(pi n / D)^2.
struct CosineWindowShape {
  double c0 = 0;
  double c1 = 0;
  double c2 = 0;
};

/// The denominator D of a window of `count` points: `count` - 1 puts the same value at both ends, `count` gives one
/// period without its last point.
enum class WindowPeriod : std::uint8_t { Symmetric, Periodic };

/// x[n] = x[n] w[n], n = 0 .. count - 1. The values are computed in double, rounded once to the precision of the data,
/// and w[n] = w[D - n] to the last bit; s is exactly 0 at n = 0 and 1 at n = D / 2.
/// Fails with BadSize (count < 0, or < 2 where the period is symmetric and the denominator would be 0 or less).
template <Element T>
Status CosineWindow(T* x, std::int32_t count, const CosineWindowShape& shape, WindowPeriod period) noexcept;

/// x[n] = x[n] 2 min(n, D - n) / D with D = count - 1. Fails with BadSize (count < 2).
template <Element T>
Status TriangleWindow(T* x, std::int32_t count) noexcept;

}  // namespace passband::primitives
