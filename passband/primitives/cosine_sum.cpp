#include "passband/primitives/cosine_sum.h"

#include <algorithm>
#include <cstddef>

#include "passband/primitives/places_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/cosine_sum.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<double>;
using V = hn::Vec<D>;

// A sum or product that is rounded, and what rounding has taken from it.
struct Exact {
  V value;
  V error;
};

HWY_INLINE Exact Sum(V a, V b) {
  const V sum = hn::Add(a, b);
  const V of_b = hn::Sub(sum, a);
  return {sum, hn::Add(hn::Sub(a, hn::Sub(sum, of_b)), hn::Sub(b, of_b))};
}

#if HWY_NATIVE_FMA
HWY_INLINE Exact Product(V a, V b) {
  const V product = hn::Mul(a, b);
  return {product, hn::MulSub(a, b, product)};
}
#else
// The upper half of the digits.
HWY_INLINE V Upper(V a) {
  const V scaled = hn::Mul(a, hn::Set(D(), 0x1.0000002p27));
  return hn::Sub(scaled, hn::Sub(scaled, a));
}

HWY_INLINE Exact Product(V a, V b) {
  const V product = hn::Mul(a, b);
  const V a1 = Upper(a);
  const V a2 = hn::Sub(a, a1);
  const V b1 = Upper(b);
  const V b2 = hn::Sub(b, b1);
  const V first = hn::Sub(hn::Mul(a1, b1), product);
  return {product, hn::Add(hn::Add(hn::Add(first, hn::Mul(a1, b2)), hn::Mul(a2, b1)), hn::Mul(a2, b2))};
}
#endif

// The last two terms of the recurrence b[k] = alpha[k] + factor b[k + 1] - b[k + 2] at a vector of points, and their
// errors.
struct Terms {
  V b1;
  V b2;
  V e1;
  V e2;
};

HWY_INLINE void Step(Terms& terms, V factor_hi, V factor_lo, V alpha_hi, V alpha_lo) {
  const Exact product = Product(factor_hi, terms.b1);
  const Exact difference = Sum(product.value, hn::Neg(terms.b2));
  const Exact sum = Sum(difference.value, alpha_hi);
  const V small = hn::MulAdd(factor_lo, terms.b1, alpha_lo);
  const V error = hn::Add(hn::Add(product.error, difference.error), hn::Add(sum.error, small));
  const V carried = hn::MulAdd(factor_hi, terms.e1, hn::Sub(error, terms.e2));
  terms.b2 = terms.b1;
  terms.b1 = sum.value;
  terms.e2 = terms.e1;
  terms.e1 = carried;
}

constexpr std::size_t kVectors = 4;  // recurrences that hide each other's latency

void Evaluate(const double* HWY_RESTRICT alpha_hi, const double* HWY_RESTRICT alpha_lo, std::size_t count,
              const Places& points, double* HWY_RESTRICT hi, double* HWY_RESTRICT lo) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  HWY_ALIGN_MAX double out_hi[kVectors * hn::MaxLanes(D())];
  HWY_ALIGN_MAX double out_lo[kVectors * hn::MaxLanes(D())];
  for (detail::PlaceBlocks block(points, kVectors * lanes); !block.Ended(); block.Next()) {
    V x_hi[kVectors], x_lo[kVectors];
    Terms terms[kVectors];
    for (std::size_t v = 0; v < kVectors; ++v) {
      x_hi[v] = hn::LoadU(d, block.Hi() + v * lanes);
      x_lo[v] = hn::LoadU(d, block.Lo() + v * lanes);
      terms[v] = {hn::Zero(d), hn::Zero(d), hn::Zero(d), hn::Zero(d)};
    }
    for (std::size_t k = count; k-- > 1;) {
      const V a_hi = hn::Set(d, alpha_hi[k]);
      const V a_lo = hn::Set(d, alpha_lo[k]);
      for (std::size_t v = 0; v < kVectors; ++v) {
        Step(terms[v], hn::Add(x_hi[v], x_hi[v]), hn::Add(x_lo[v], x_lo[v]), a_hi, a_lo);
      }
    }
    for (std::size_t v = 0; v < kVectors; ++v) {
      Step(terms[v], x_hi[v], x_lo[v], hn::Set(d, alpha_hi[0]), hn::Set(d, alpha_lo[0]));
      hn::Store(terms[v].b1, d, out_hi + v * lanes);
      hn::Store(terms[v].e1, d, out_lo + v * lanes);
    }
    std::copy_n(out_hi, block.Count(), hi + block.At());
    std::copy_n(out_lo, block.Count(), lo + block.At());
  }
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Evaluate);
}  // namespace

Status CosineSums(const double* alpha_hi, const double* alpha_lo, std::int32_t count, Places points, double* hi,
                  double* lo) noexcept {
  if (count < 1 || points.count < 0) return Status::BadSize;
  if (alpha_hi == nullptr || alpha_lo == nullptr) return Status::NullPointer;
  if (points.count == 0) return Status::Ok;
  if (points.hi == nullptr || points.lo == nullptr || hi == nullptr || lo == nullptr) return Status::NullPointer;
  HWY_DYNAMIC_DISPATCH(Evaluate)(alpha_hi, alpha_lo, static_cast<std::size_t>(count), points, hi, lo);
  return Status::Ok;
}

}  // namespace passband::primitives
#endif  // HWY_ONCE
