// Frequencies as places on the interval -1 .. 1 on which amplitudes are polynomials: x = cos(2 pi f).
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "passband/primitives/barycentric.h"

namespace passband::OptimalFir::detail {

/// What finishes below the noise of doubles: coefficients, residuals, taps.
using Wide = long double;

/// x = hi + lo, |lo| at most half a unit in the last place of hi.
struct Place {
  double hi = 0;
  double lo = 0;
};

/// The place of 0 <= f <= 0.5; 1 - |x| is right to the last digits of extended precision.
Place PlaceOf(Wide f);

/// Places of many frequencies, with sin(pi f) and cos(pi f), each right to its own last digits: 1 - |x| is right to
/// some 1e-16 of itself.
struct PlaceSet {
  std::vector<double> hi;
  std::vector<double> lo;
  std::vector<double> sine;
  std::vector<double> cosine;

  explicit PlaceSet(std::span<const double> frequencies);
  primitives::Places Places() const { return {hi.data(), lo.data(), static_cast<std::int32_t>(hi.size())}; }
};

}  // namespace passband::OptimalFir::detail
