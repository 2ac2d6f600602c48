// Real samples on a logarithmic scale with a floor.
#pragma once

#include <cstdint>

#include "passband/foundation/element_types.h"
#include "passband/primitives/status.h"

namespace passband::primitives {

/// y = slope ln(x / reference), never below the floor.
struct LogScale {
  double reference = 1;  ///< > 0, finite
  double slope = 1;      ///< > 0
  /// slope ln 2 as a sum: the first part with at most 12 significant bits, so that its products with exponents are exact.
  double octave_high = 0;
  double octave_low = 0;
  double floor = 0;
};

/// x[n] = y(x[n]), n = 0 .. count - 1. What is not above 0 becomes the floor, a NaN stays. Computed in R; the share of the
/// exponent of x is exact, so that about one unit in the last place is lost, or 1e-7 (single), 2e-16 (double) of the slope
/// where y is next to 0; 0 at the reference itself. Fails with BadSize (count < 0), NullPointer.
template <RealElement R>
Status ToLogScale(R* x, std::int32_t count, const LogScale& scale) noexcept;

}  // namespace passband::primitives
