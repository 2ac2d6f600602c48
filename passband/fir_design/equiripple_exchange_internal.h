// The exchange of extremal points.
#pragma once

#include <cstdint>
#include <vector>

#include "passband/fir_design/equiripple_approximation_internal.h"

namespace passband::OptimalFir::detail {

struct ExchangeLimits {
  double tolerance = 1e-9;  ///< largest error over levelled error, less 1, at which the exchange ends
  double least = 0;         ///< a levelled error that stays below this is not followed
  std::int32_t iterations = 50;
};

struct ExchangeResult {
  std::vector<std::int64_t> nodes;  ///< the last extremal set
  double deviation = 0;             ///< levelled error at it, >= 0
  double largest = 0;               ///< largest error found beside it
  double noise = 0;                 ///< size of rounding errors in these errors
  std::int32_t iterations = 0;
  bool levelled = false;  ///< ended by its tolerance, or by the noise of doubles
};

/// Runs the multiple exchange from the given set of positions until the largest error is the levelled one.
ExchangeResult Exchange(const Target& target, std::vector<std::int64_t> nodes, const ExchangeLimits& limits);

}  // namespace passband::OptimalFir::detail
