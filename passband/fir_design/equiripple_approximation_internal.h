// Approximations by sums of cosines: by their coefficients, and by interpolation of a levelled error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "passband/fir_design/equiripple_grid_internal.h"
#include "passband/vector_core/extended_precision_internal.h"

namespace passband::OptimalFir::detail {

using Twin = passband::detail::TwinDouble;

/// P(x) = sum of alpha[k] cos(2 pi k f), x = cos(2 pi f), with twice the digits of double.
class CosineSum {
 public:
  CosineSum() = default;
  explicit CosineSum(std::size_t count) : hi_(count), lo_(count) {}

  std::size_t Size() const { return hi_.size(); }
  /// The coefficient of cosine k; 0 behind the last.
  Twin operator[](std::size_t k) const { return k < hi_.size() ? Twin{hi_[k], lo_[k]} : Twin{}; }
  void Set(std::size_t k, Twin alpha);
  /// Adds the sum with these coefficients; the longer one sets the length.
  void Add(std::span<const Wide> alpha);
  /// The values at the points, as sums of two doubles.
  void At(primitives::Places points, std::vector<double>& hi, std::vector<double>& lo) const;

 private:
  std::vector<double> hi_;
  std::vector<double> lo_;
};

/// What is approximated: the desired values of a grid, less a sum of cosines that approximates them already. What is
/// left is as small as the error that is sought and keeps its digits in double.
struct Target {
  std::shared_ptr<const FrequencyGrid> grid;
  double scale = 0;  ///< the largest weighted desired value
  CosineSum base;

  /// The whole target of a grid.
  explicit Target(std::shared_ptr<const FrequencyGrid> whole);
  Target() = default;

  /// The points at ascending positions.
  PointSet Points(std::vector<std::int64_t> positions) const;
  /// The points with what a levelled error leaves, as desired values: `level` weighted at the first point, alternating
  /// in sign.
  PointSet Rests(std::vector<std::int64_t> positions, Wide level) const;
  /// The size of rounding errors in weighted rests.
  double Floor() const { return base.Size() == 0 ? 0 : 0x1p-62 * scale; }
};

/// The largest weighted desired value; NaN if there is one.
double LargestDesired(const PointSet& points);

/// The polynomial in x of degree Size() - 2 whose weighted error at the nodes is +-deviation, alternating.
class LevelledInterpolant {
 public:
  explicit LevelledInterpolant(PointSet nodes);

  const PointSet& Nodes() const { return nodes_; }
  /// weight (desired - P) at the first node; its sign alternates from node to node.
  double Deviation() const { return deviation_; }
  /// The largest weighted ordinate at the nodes.
  double Largest() const { return largest_; }
  /// The size of rounding errors in weighted errors.
  double Noise() const { return 0x1p-50 * largest_; }
  /// weight (desired - P) at the points.
  void Errors(const PointSet& points, std::span<double> errors) const;
  /// Coefficients of the cosines 0 .. count - 1, from equally spaced values. Between bands a polynomial that is small
  /// in them may be as large as the reciprocal of the deviation, with rounding errors in proportion, and they reach the
  /// coefficients: this leaves an error in the bands that a second interpolation takes away as long as it is below the
  /// polynomial itself.
  std::vector<Wide> Coefficients(std::size_t count) const;

 private:
  PointSet nodes_;
  std::vector<double> weights_;  // of the barycentric formula, times 2^exponent_
  std::int64_t exponent_ = 0;
  std::vector<double> ordinates_;
  std::vector<double> weighted_;  // weights_ ordinates_
  double deviation_ = 0;
  double largest_ = 0;
};

}  // namespace passband::OptimalFir::detail
