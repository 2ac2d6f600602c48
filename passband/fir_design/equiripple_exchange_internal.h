// The exchange of extremal points.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "passband/fir_design/equiripple_approximation_internal.h"

namespace passband::OptimalFir::detail {

struct ExchangeLimits {
  double tolerance = 1e-9;  ///< largest error over levelled error, less 1, at which the exchange ends
  double least = 0;         ///< a levelled error that stays below this is not followed
  double first = std::numeric_limits<double>::infinity();  ///< largest error at the start from which to go on
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

/// `count` positions, equally spaced over the grid, the first and the last point among them.
std::vector<std::int64_t> EvenNodes(const FrequencyGrid& grid, std::size_t count);

/// `count` positions on a grid, spread over each of its bands like the given ones on another grid of the same bands.
std::vector<std::int64_t> StretchedNodes(const FrequencyGrid& from, const std::vector<std::int64_t>& nodes,
                                         const FrequencyGrid& grid, std::size_t count);

}  // namespace passband::OptimalFir::detail
