// Where an exchange looks for extrema of the error, and which of those it finds become nodes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "passband/fir_design/equiripple_grid_internal.h"

namespace passband::OptimalFir::detail {

/// What an iteration looks at: three points between two nodes, or the neighbours of the nodes and the middle.
enum class Look { Between, Beside };

/// The positions to look at, ascending: the nodes, the ends of segments, points between them. Stretches without a node
/// are cut so that they are not longer than the distance of nodes on average.
std::vector<std::int64_t> Candidates(const FrequencyGrid& grid, const std::vector<std::int64_t>& nodes, Look look);

struct Extremum {
  std::size_t index;  ///< among the candidates
  double error;
};

/// The largest error of each run of one sign that has a node in it, or an error of at least `large`. What is left out
/// would otherwise take the places of nodes elsewhere, all at once where there are many bands.
std::vector<Extremum> AlternatingExtrema(const std::vector<std::int64_t>& points, const std::vector<double>& errors,
                                         const std::vector<std::int64_t>& nodes, double large);

/// Leaves `count` of them, still alternating, and the largest among them: an end goes alone, an inner one with its
/// smaller neighbour.
void Thin(std::vector<Extremum>& extrema, std::size_t count);

/// The grid points next to the vertices of the errors around the extrema.
std::vector<std::int64_t> Vertices(const FrequencyGrid& grid, const std::vector<std::int64_t>& points,
                                   const std::vector<double>& errors, const std::vector<Extremum>& extrema);

}  // namespace passband::OptimalFir::detail
