#include "passband/fir_design/equiripple_approximation_internal.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "passband/primitives/cosine_sum.h"
#include "passband/vector_core/vec.h"

namespace passband::OptimalFir::detail {
namespace {

void Check(primitives::Status status) {
  if (primitives::Failed(status)) throw std::bad_alloc();  // sizes and pointers are right, memory may be short
}

// The smallest size from `least` on that has no prime factor above 5: transforms of other sizes are slow to plan.
std::size_t SmoothSize(std::size_t least) {
  for (std::size_t size = least;; ++size) {
    std::size_t rest = size;
    for (const std::size_t factor : {2U, 3U, 5U}) {
      while (rest % factor == 0) rest /= factor;
    }
    if (rest == 1) return size;
  }
}

}  // namespace

void CosineSum::Set(std::size_t k, Twin alpha) {
  hi_[k] = alpha.Hi;
  lo_[k] = alpha.Lo;
}

void CosineSum::Add(std::span<const Wide> alpha) {
  if (hi_.size() < alpha.size()) {
    hi_.resize(alpha.size());
    lo_.resize(alpha.size());
  }
  for (std::size_t k = 0; k < alpha.size(); ++k) {
    const auto hi = static_cast<double>(alpha[k]);
    Set(k, (*this)[k] + Twin{hi, static_cast<double>(alpha[k] - static_cast<Wide>(hi))});
  }
}

void CosineSum::At(primitives::Places points, std::vector<double>& hi, std::vector<double>& lo) const {
  hi.resize(static_cast<std::size_t>(points.count));
  lo.resize(hi.size());
  const auto count = static_cast<std::int32_t>(hi_.size());
  Check(primitives::CosineSums(hi_.data(), lo_.data(), count, points, hi.data(), lo.data()));
}

Target::Target(std::shared_ptr<const FrequencyGrid> whole) : grid(std::move(whole)), scale(grid->Scale()) {}

PointSet Target::Points(std::vector<std::int64_t> positions) const {
  return base.Size() == 0 ? grid->Points(std::move(positions)) : Rests(std::move(positions), 0);
}

PointSet Target::Rests(std::vector<std::int64_t> positions, Wide level) const {
  PointSet points = grid->Points(std::move(positions));
  for (std::size_t i = 0; i < points.Size(); ++i) {
    const Place place = PlaceOf(static_cast<Wide>(grid->Frequency(points.positions[i])));
    points.hi[i] = place.hi;
    points.lo[i] = place.lo;
  }
  std::vector<double> hi;
  std::vector<double> lo;
  base.At(points.Places(), hi, lo);
  for (std::size_t i = 0; i < points.Size(); ++i, level = -level) {
    const Wide error = (grid->Desired(points.positions[i]) - static_cast<Wide>(hi[i])) - static_cast<Wide>(lo[i]);
    points.desired[i] = static_cast<double>(error - level / static_cast<Wide>(points.weight[i]));
  }
  return points;
}

double LargestDesired(const PointSet& points) {
  double largest = 0;
  for (std::size_t i = 0; i < points.Size(); ++i) {
    const double desired = points.weight[i] * std::abs(points.desired[i]);
    if (std::isnan(desired)) return desired;
    largest = std::max(largest, desired);
  }
  return largest;
}

LevelledInterpolant::LevelledInterpolant(PointSet nodes)
    : nodes_(std::move(nodes)), weights_(nodes_.Size()), ordinates_(nodes_.desired), weighted_(nodes_.Size()) {
  Check(primitives::BarycentricWeights(nodes_.Places(), weights_.data(), exponent_));
  // Signs of the weights alternate, so that the second sum has no cancellation.
  double top = 0;
  double bottom = 0;
  for (std::size_t k = 0; k < weights_.size(); ++k) {
    top += weights_[k] * nodes_.desired[k];
    bottom += std::abs(weights_[k]) / nodes_.weight[k];
  }
  deviation_ = std::copysign(1.0, weights_[0]) * top / bottom;
  double error = deviation_;
  for (std::size_t k = 0; k < weights_.size(); ++k) {
    ordinates_[k] -= error / nodes_.weight[k];
    weighted_[k] = weights_[k] * ordinates_[k];
    largest_ = std::max(largest_, nodes_.weight[k] * std::abs(ordinates_[k]));
    error = -error;
  }
}

void LevelledInterpolant::Errors(const PointSet& points, std::span<double> errors) const {
  Check(primitives::BarycentricValues(nodes_.Places(), weights_.data(), weighted_.data(), points.Places(),
                                      errors.data()));
  for (std::size_t i = 0; i < errors.size(); ++i) errors[i] = points.weight[i] * (points.desired[i] - errors[i]);
}

std::vector<Wide> LevelledInterpolant::Coefficients(std::size_t count) const {
  const std::size_t half = SmoothSize(count);
  std::vector<double> frequencies(half + 1);  // j / (2 half)
  for (std::size_t j = 0; j <= half; ++j) frequencies[j] = static_cast<double>(j) / static_cast<double>(2 * half);
  const PlaceSet even(frequencies);
  std::vector<double> values(half + 1);
  Check(primitives::LagrangeValues(nodes_.Places(), weighted_.data(), exponent_, even.Places(), values.data()));
  TVec spectrum;  // of even sums of cosines it is real
  spectrum.Size(static_cast<std::int32_t>(half + 1), TMtxFloatPrecision::DoubleComplex);
  for (std::size_t j = 0; j <= half; ++j) {
    if (!std::isfinite(values[j])) {  // at a node
      values[j] = 0;
      for (std::size_t k = 0; k < nodes_.Size(); ++k) {
        if (nodes_.hi[k] == even.hi[j] && nodes_.lo[k] == even.lo[j]) values[j] = ordinates_[k];
      }
    }
    spectrum.CValues()[j] = {values[j], 0};
  }
  TVec sums;
  sums.IFFTToReal(spectrum);
  std::vector<Wide> alpha(count);
  for (std::size_t k = 0; k < count; ++k) alpha[k] = 2 * static_cast<Wide>(sums.Values()[k]);
  alpha[0] /= 2;
  return alpha;
}

}  // namespace passband::OptimalFir::detail
