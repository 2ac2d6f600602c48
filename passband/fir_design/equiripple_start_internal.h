// Extremal sets to start an exchange from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "passband/fir_design/equiripple_grid_internal.h"

namespace passband::OptimalFir::detail {

/// `count` positions, equally spaced over the grid, the first and the last point among them.
std::vector<std::int64_t> EvenNodes(const FrequencyGrid& grid, std::size_t count);

/// `count` positions on a grid, spread over each of its bands like the given ones on another grid of the same bands.
std::vector<std::int64_t> StretchedNodes(const FrequencyGrid& from, const std::vector<std::int64_t>& nodes,
                                         const FrequencyGrid& grid, std::size_t count);

/// One node less in one segment and one more in another, the others spread along both like before.
std::vector<std::int64_t> WithNodeMoved(const FrequencyGrid& grid, const std::vector<std::int64_t>& nodes,
                                        std::size_t from, std::size_t to);

}  // namespace passband::OptimalFir::detail
