// Levelled interpolation in extended precision throughout.
#pragma once

#include <cstddef>
#include <vector>

#include "passband/fir_design/equiripple_grid_internal.h"

namespace passband::OptimalFir::detail {

/// A product mantissa 2^exponent of factors that would leave the range of a floating-point number.
struct ScaledProduct {
  Wide mantissa = 1;
  int exponent = 0;
};

/// Interpolates at one set of nodes as `LevelledInterpolant` does. Cost: some ten nanoseconds for each pair of a node
/// and a cosine to begin with, the same for each interpolation.
class WideInterpolator {
 public:
  /// `count` cosines; the nodes are at the places of these points.
  WideInterpolator(const PointSet& nodes, std::size_t count);

  struct Result {
    std::vector<Wide> alpha;  ///< coefficients of the cosines
    Wide deviation = 0;       ///< as `LevelledInterpolant::Deviation`
  };
  /// Interpolates the desired values of points that are the nodes.
  Result Interpolate(const PointSet& nodes) const;

 private:
  Wide ValueAt(const PointSet& nodes, const std::vector<Wide>& ordinates, std::size_t j) const;
  std::vector<Wide> CosineTransform(std::vector<Wide> values) const;

  std::vector<Wide> weights_;  // of the barycentric formula, times 2^exponent_
  int exponent_ = 0;
  std::vector<Place> places_;            // of the frequencies j / (2 count), j = 0 .. count
  std::vector<ScaledProduct> products_;  // of their distances to all nodes
  std::vector<Wide> cosines_;            // cos(pi m / count), m = 0 .. 2 count - 1
};

}  // namespace passband::OptimalFir::detail
