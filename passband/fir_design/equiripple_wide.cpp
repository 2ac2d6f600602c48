#include "passband/fir_design/equiripple_wide_internal.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace passband::OptimalFir::detail {
namespace {

constexpr Wide kPi = std::numbers::pi_v<Wide>;
constexpr std::size_t kRenewal = 64;  // factors after which the exponent is taken out

Wide Distance(const PointSet& nodes, std::size_t k, const Place& place) {
  return (static_cast<Wide>(place.hi) - static_cast<Wide>(nodes.hi[k])) +
         (static_cast<Wide>(place.lo) - static_cast<Wide>(nodes.lo[k]));
}

// The product of the distances of a place to all nodes; a distance of 0 is left out.
ScaledProduct DistanceProduct(const PointSet& nodes, const Place& place) {
  ScaledProduct product;
  for (std::size_t j = 0; j < nodes.Size(); ++j) {
    const Wide distance = Distance(nodes, j, place);
    if (distance != 0) product.mantissa *= distance;
    if (j % kRenewal == kRenewal - 1) {
      int exponent = 0;
      product.mantissa = std::frexp(product.mantissa, &exponent);
      product.exponent += exponent;
    }
  }
  return product;
}

}  // namespace

WideInterpolator::WideInterpolator(const PointSet& nodes, std::size_t count) : cosines_(2 * count) {
  std::vector<ScaledProduct> own;
  exponent_ = std::numeric_limits<int>::min();
  for (std::size_t k = 0; k < nodes.Size(); ++k) {
    own.push_back(DistanceProduct(nodes, {nodes.hi[k], nodes.lo[k]}));
    exponent_ = std::max(exponent_, -own[k].exponent);
  }
  for (const ScaledProduct& p : own) weights_.push_back(std::ldexp(1 / p.mantissa, -p.exponent - exponent_));
  for (std::size_t j = 0; j <= count; ++j) {
    const Wide f = static_cast<Wide>(j) / static_cast<Wide>(2 * count);
    places_.push_back(PlaceOf(f));
    products_.push_back(DistanceProduct(nodes, places_[j]));
    cosines_[j] = f <= 0.25L ? std::cos(2 * kPi * f) : -std::cos(2 * kPi * (0.5L - f));
    if (j > 0) cosines_[2 * count - j] = cosines_[j];
  }
}

WideInterpolator::Result WideInterpolator::Interpolate(const PointSet& nodes) const {
  // The amount by which the desired values miss a polynomial of one degree less, spread over them all.
  Wide top = 0;
  Wide bottom = 0;
  for (std::size_t k = 0; k < weights_.size(); ++k) {
    top += weights_[k] * static_cast<Wide>(nodes.desired[k]);
    bottom += std::abs(weights_[k]) / static_cast<Wide>(nodes.weight[k]);
  }
  const Wide deviation = std::copysign(Wide(1), weights_[0]) * top / bottom;
  std::vector<Wide> ordinates(nodes.Size());
  Wide error = deviation;
  for (std::size_t k = 0; k < nodes.Size(); ++k, error = -error) {
    ordinates[k] = static_cast<Wide>(nodes.desired[k]) - error / static_cast<Wide>(nodes.weight[k]);
  }
  std::vector<Wide> values(places_.size());
  for (std::size_t j = 0; j < places_.size(); ++j) values[j] = ValueAt(nodes, ordinates, j);
  return {CosineTransform(std::move(values)), deviation};
}

// The first form of the barycentric formula: unlike the quotient of the second it keeps its digits where the polynomial
// is much larger than at the nodes.
Wide WideInterpolator::ValueAt(const PointSet& nodes, const std::vector<Wide>& ordinates, std::size_t j) const {
  Wide sum = 0;
  for (std::size_t k = 0; k < nodes.Size(); ++k) {
    const Wide distance = Distance(nodes, k, places_[j]);
    if (distance == 0) return ordinates[k];
    sum += weights_[k] * ordinates[k] / distance;
  }
  return std::ldexp(sum * products_[j].mantissa, products_[j].exponent + exponent_);
}

// Coefficients from the values at the frequencies j / (2 count).
std::vector<Wide> WideInterpolator::CosineTransform(std::vector<Wide> values) const {
  const std::size_t count = values.size() - 1;
  values.front() /= 2;
  values.back() /= 2;
  std::vector<Wide> alpha(count);
  for (std::size_t k = 0; k < count; ++k) {
    Wide sum = 0;
    for (std::size_t j = 0, m = 0; j <= count; ++j) {
      sum += values[j] * cosines_[m];
      m += k;
      if (m >= 2 * count) m -= 2 * count;
    }
    alpha[k] = sum * (k == 0 ? 1 : 2) / static_cast<Wide>(count);
  }
  return alpha;
}

}  // namespace passband::OptimalFir::detail
