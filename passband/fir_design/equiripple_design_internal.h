// The best approximation of a band plan: the exchange, its start, and the coefficients in the precision that they need.
#pragma once

#include <cstdint>

#include "passband/fir_design/equiripple_approximation_internal.h"

namespace passband::OptimalFir::detail {

/// Exchange iterations from which on a design counts as not converged.
inline constexpr std::int32_t kMaxIterations = 50;

struct Approximation {
  CosineSum sum;
  double deviation = 0;         ///< largest weighted error
  std::int32_t iterations = 0;  ///< kMaxIterations when the error is not levelled
};

/// Approximates the bands for a filter of `length` taps.
Approximation BestApproximation(const BandPlan& bands, std::int32_t length);

}  // namespace passband::OptimalFir::detail
