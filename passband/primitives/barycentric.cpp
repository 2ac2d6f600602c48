#include "passband/primitives/barycentric.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

#include "passband/primitives/places_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/barycentric.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<double>;
using V = hn::Vec<D>;
using DI = hn::RebindToSigned<D>;
using VI = hn::Vec<DI>;

constexpr std::size_t kChains = 4;    // products that advance side by side
constexpr std::size_t kRenewal = 16;  // factors after which the exponents are taken out; each is between 1e-18 and 2

// Adds the exponent of p to `exponent` and leaves p between 1 and 2, with its sign.
HWY_INLINE void TakeExponent(V& p, VI& exponent) {
  const D d;
  const DI di;
  const VI bits = hn::BitCast(di, p);
  const VI field = hn::And(hn::ShiftRight<52>(bits), hn::Set(di, 0x7FF));
  exponent = hn::Add(exponent, hn::Sub(field, hn::Set(di, 1023)));
  const VI kept = hn::AndNot(hn::Set(di, std::int64_t{0x7FF} << 52), bits);
  p = hn::BitCast(d, hn::Or(kept, hn::Set(di, std::int64_t{1023} << 52)));
}

// The products of the distances of kChains vectors of points to all nodes; a distance of 0 is left out.
HWY_INLINE void Products(const Places& nodes, const double* points_hi, const double* points_lo,
                         double* HWY_RESTRICT mantissas, std::int64_t* HWY_RESTRICT exponents) {
  const D d;
  const DI di;
  const std::size_t lanes = hn::Lanes(d);
  const auto count = static_cast<std::size_t>(nodes.count);
  V hi[kChains], lo[kChains], product[kChains];
  VI exponent[kChains];
  for (std::size_t c = 0; c < kChains; ++c) {
    hi[c] = hn::LoadU(d, points_hi + c * lanes);
    lo[c] = hn::LoadU(d, points_lo + c * lanes);
    product[c] = hn::Set(d, 1.0);
    exponent[c] = hn::Zero(di);
  }
  const V one = hn::Set(d, 1.0);
  for (std::size_t j = 0; j < count;) {
    const std::size_t end = std::min(count, j + kRenewal);
    for (; j < end; ++j) {
      const V node_hi = hn::Set(d, nodes.hi[j]);
      const V node_lo = hn::Set(d, nodes.lo[j]);
      for (std::size_t c = 0; c < kChains; ++c) {
        const V distance = hn::Add(hn::Sub(hi[c], node_hi), hn::Sub(lo[c], node_lo));
        product[c] = hn::Mul(product[c], hn::IfThenElse(hn::Eq(distance, hn::Zero(d)), one, distance));
      }
    }
    for (std::size_t c = 0; c < kChains; ++c) TakeExponent(product[c], exponent[c]);
  }
  for (std::size_t c = 0; c < kChains; ++c) {
    hn::StoreU(product[c], d, mantissas + c * lanes);
    hn::StoreU(exponent[c], di, exponents + c * lanes);
  }
}

// mantissas[i] 2^exponents[i] is the product at point i. Both arrays have room for a block behind the last point.
void AllProducts(const Places& nodes, const Places& points, double* mantissas, std::int64_t* exponents) {
  for (detail::PlaceBlocks block(points, kChains * hn::Lanes(D())); !block.Ended(); block.Next()) {
    Products(nodes, block.Hi(), block.Lo(), mantissas + block.At(), exponents + block.At());
  }
}

// Adds c[k] / t[k] over four nodes to each sum, with a single division.
template <std::size_t kSums>
HWY_INLINE void AddFour(V (&sums)[kSums], const V (&c)[kSums][4], const V (&t)[4]) {
  const V t01 = hn::Mul(t[0], t[1]);
  const V t23 = hn::Mul(t[2], t[3]);
  const V inverse = hn::Div(hn::Set(D(), 1.0), hn::Mul(t01, t23));
  for (std::size_t s = 0; s < kSums; ++s) {
    const V c01 = hn::MulAdd(c[s][0], t[1], hn::Mul(c[s][1], t[0]));
    const V c23 = hn::MulAdd(c[s][2], t[3], hn::Mul(c[s][3], t[2]));
    sums[s] = hn::MulAdd(hn::MulAdd(c01, t23, hn::Mul(c23, t01)), inverse, sums[s]);
  }
}

constexpr std::size_t kPointVectors = 2;

// One or two sums of coefficients[s][k] / (x - x[k]) over the nodes, at kPointVectors vectors of points.
template <std::size_t kSums>
HWY_INLINE void SumsAt(const Places& nodes, const double* const (&coefficients)[kSums], const V (&hi)[kPointVectors],
                       const V (&lo)[kPointVectors], V (&sums)[kPointVectors][kSums]) {
  const D d;
  const auto count = static_cast<std::size_t>(nodes.count);
  for (auto& at_point : sums) {
    for (V& sum : at_point) sum = hn::Zero(d);
  }
  const auto distance = [&](std::size_t v, std::size_t k) HWY_ATTR {
    return hn::Add(hn::Sub(hi[v], hn::Set(d, nodes.hi[k])), hn::Sub(lo[v], hn::Set(d, nodes.lo[k])));
  };
  std::size_t k = 0;
  for (; k + 4 <= count; k += 4) {
    V c[kSums][4];
    for (std::size_t s = 0; s < kSums; ++s) {
      for (std::size_t i = 0; i < 4; ++i) c[s][i] = hn::Set(d, coefficients[s][k + i]);
    }
    for (std::size_t v = 0; v < kPointVectors; ++v) {
      const V t[4] = {distance(v, k), distance(v, k + 1), distance(v, k + 2), distance(v, k + 3)};
      AddFour(sums[v], c, t);
    }
  }
  for (; k < count; ++k) {
    for (std::size_t v = 0; v < kPointVectors; ++v) {
      const V inverse = hn::Div(hn::Set(d, 1.0), distance(v, k));
      for (std::size_t s = 0; s < kSums; ++s) {
        sums[v][s] = hn::MulAdd(hn::Set(d, coefficients[s][k]), inverse, sums[v][s]);
      }
    }
  }
}

// values[i] = the first sum at point i over the second, or the first alone.
template <std::size_t kSums>
void Evaluate(const Places& nodes, const double* const (&coefficients)[kSums], const Places& points, double* values) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  HWY_ALIGN_MAX double out[kPointVectors * hn::MaxLanes(D())];
  for (detail::PlaceBlocks block(points, kPointVectors * lanes); !block.Ended(); block.Next()) {
    V hi[kPointVectors], lo[kPointVectors], sums[kPointVectors][kSums];
    for (std::size_t v = 0; v < kPointVectors; ++v) {
      hi[v] = hn::LoadU(d, block.Hi() + v * lanes);
      lo[v] = hn::LoadU(d, block.Lo() + v * lanes);
    }
    SumsAt(nodes, coefficients, hi, lo, sums);
    for (std::size_t v = 0; v < kPointVectors; ++v) {
      hn::Store(kSums == 2 ? hn::Div(sums[v][0], sums[v][kSums - 1]) : sums[v][0], d, out + v * lanes);
    }
    std::copy_n(out, block.Count(), values + block.At());
  }
}

void Values(const Places& nodes, const double* weights, const double* weighted, const Places& points, double* values) {
  Evaluate<2>(nodes, {weighted, weights}, points, values);
}

void Sums(const Places& nodes, const double* weighted, const Places& points, double* values) {
  Evaluate<1>(nodes, {weighted}, points, values);
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(AllProducts);
HWY_EXPORT(Values);
HWY_EXPORT(Sums);

bool Incomplete(const Places& places) { return places.hi == nullptr || places.lo == nullptr; }

// Products of the distances of the points to the nodes. False when memory is short.
struct DistanceProducts {
  std::vector<double> mantissas;
  std::vector<std::int64_t> exponents;

  bool Compute(const Places& nodes, const Places& points) noexcept {
    const auto count = static_cast<std::size_t>(points.count);
    try {
      mantissas.resize(count + detail::kMaxBlock);
      exponents.resize(count + detail::kMaxBlock);
    } catch (const std::bad_alloc&) {
      return false;
    }
    HWY_DYNAMIC_DISPATCH(AllProducts)(nodes, points, mantissas.data(), exponents.data());
    return true;
  }
};

// x 2^exponent for an exponent of any size.
double Scaled(double x, std::int64_t exponent) {
  return std::ldexp(x, static_cast<int>(std::clamp<std::int64_t>(exponent, -5000, 5000)));
}
}  // namespace

Status BarycentricWeights(Places nodes, double* weights, std::int64_t& exponent) noexcept {
  if (nodes.count < 1) return Status::BadSize;
  if (Incomplete(nodes) || weights == nullptr) return Status::NullPointer;
  DistanceProducts products;
  if (!products.Compute(nodes, nodes)) return Status::OutOfMemory;
  const std::int64_t least = *std::min_element(products.exponents.begin(), products.exponents.begin() + nodes.count);
  for (std::size_t k = 0; k < static_cast<std::size_t>(nodes.count); ++k) {
    weights[k] = Scaled(1 / products.mantissas[k], least - products.exponents[k]);
  }
  exponent = -least;
  return Status::Ok;
}

Status BarycentricValues(Places nodes, const double* weights, const double* weighted, Places points,
                         double* values) noexcept {
  if (nodes.count < 1 || points.count < 0) return Status::BadSize;
  if (Incomplete(nodes) || weights == nullptr || weighted == nullptr) return Status::NullPointer;
  if (points.count == 0) return Status::Ok;
  if (Incomplete(points) || values == nullptr) return Status::NullPointer;
  HWY_DYNAMIC_DISPATCH(Values)(nodes, weights, weighted, points, values);
  return Status::Ok;
}

Status LagrangeValues(Places nodes, const double* weighted, std::int64_t exponent, Places points,
                      double* values) noexcept {
  if (nodes.count < 1 || points.count < 0) return Status::BadSize;
  if (Incomplete(nodes) || weighted == nullptr) return Status::NullPointer;
  if (points.count == 0) return Status::Ok;
  if (Incomplete(points) || values == nullptr) return Status::NullPointer;
  DistanceProducts products;
  if (!products.Compute(nodes, points)) return Status::OutOfMemory;
  HWY_DYNAMIC_DISPATCH(Sums)(nodes, weighted, points, values);
  for (std::size_t i = 0; i < static_cast<std::size_t>(points.count); ++i) {
    values[i] = Scaled(values[i] * products.mantissas[i], products.exponents[i] + exponent);
  }
  return Status::Ok;
}

}  // namespace passband::primitives
#endif  // HWY_ONCE
