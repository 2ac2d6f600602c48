// Rows of numbers in the vectors of one instruction set, and the way of samples into them and out of them.
#if defined(PASSBAND_PRIMITIVES_IIR_SECTIONS_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_IIR_SECTIONS_ROWS_INL_H_
#undef PASSBAND_PRIMITIVES_IIR_SECTIONS_ROWS_INL_H_
#else
#define PASSBAND_PRIMITIVES_IIR_SECTIONS_ROWS_INL_H_
#endif

#include <cstddef>
#include <type_traits>

#include "hwy/highway.h"
#include "passband/primitives/iir_sections_internal.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;
using detail::kIirGroup;
using detail::kIirLeast;
using detail::kIirSilence;

// For lambdas that stand for lines of the function around them.
#undef PASSBAND_UNFOLD
#define PASSBAND_UNFOLD HWY_ATTR __attribute__((always_inline))

// Walks the vectors of a row; compilers would not unroll the loop by themselves.
#undef PASSBAND_FOR_VECTORS
#if HWY_COMPILER_CLANG
#define PASSBAND_FOR_VECTORS(i) _Pragma("unroll") for (std::size_t i = 0; i < kVectors; ++i)
#else
#define PASSBAND_FOR_VECTORS(i) _Pragma("GCC unroll 8") for (std::size_t i = 0; i < kVectors; ++i)
#endif

// Calls body(k) for k = kFirst .. kCount - 1 as compile-time constants.
template <std::size_t kCount, std::size_t kFirst = 0, class Body>
HWY_INLINE void Repeat(const Body& body) {
  if constexpr (kFirst < kCount) {
    body(std::integral_constant<std::size_t, kFirst>());
    Repeat<kCount, kFirst + 1>(body);
  }
}

// kLength doubles in the vectors of this instruction set.
template <std::size_t kLength>
struct Row {
  using D = hn::CappedTag<double, kLength>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kLanes = hn::MaxLanes(D());
  static constexpr std::size_t kVectors = kLength / kLanes;
  V v[kVectors];

  static HWY_INLINE Row Load(const double* p) {
    Row row;
    PASSBAND_FOR_VECTORS(i) row.v[i] = hn::Load(D(), p + i * kLanes);
    return row;
  }
  static HWY_INLINE Row Zero() {
    Row row;
    PASSBAND_FOR_VECTORS(i) row.v[i] = hn::Zero(D());
    return row;
  }
  HWY_INLINE void Store(double* p) const { PASSBAND_FOR_VECTORS(i) hn::Store(v[i], D(), p + i * kLanes); }
  HWY_INLINE Row operator+(const Row& other) const {
    Row row;
    PASSBAND_FOR_VECTORS(i) row.v[i] = hn::Add(v[i], other.v[i]);
    return row;
  }
  HWY_INLINE Row operator*(const Row& other) const {
    Row row;
    PASSBAND_FOR_VECTORS(i) row.v[i] = hn::Mul(v[i], other.v[i]);
    return row;
  }
  HWY_INLINE Row operator*(V factor) const {
    Row row;
    PASSBAND_FOR_VECTORS(i) row.v[i] = hn::Mul(v[i], factor);
    return row;
  }
  // The elements 2 k and 2 k + 1 exchanged.
  HWY_INLINE Row Swapped() const {
    Row row;
#if HWY_TARGET == HWY_SCALAR
    PASSBAND_FOR_VECTORS(i) row.v[i] = v[i ^ 1];
#else
    PASSBAND_FOR_VECTORS(i) row.v[i] = hn::Shuffle01(v[i]);
#endif
    return row;
  }
  // Small numbers become 0.
  HWY_INLINE void Silence() {
    const V silence = hn::Set(D(), kIirSilence);
    bool none = true;
    PASSBAND_FOR_VECTORS(i) none = none && hn::AllFalse(D(), hn::Lt(hn::Abs(v[i]), silence));
    if (HWY_LIKELY(none)) return;
    PASSBAND_FOR_VECTORS(i) v[i] = hn::IfThenZeroElse(hn::Lt(hn::Abs(v[i]), silence), v[i]);
  }
};

using Samples = Row<kIirGroup>;

template <std::size_t kLength>
HWY_INLINE typename Row<kLength>::V Broadcast(const double* p) {
  return hn::Set(typename Row<kLength>::D(), *p);
}

HWY_INLINE double Widen(double x) { return x > -kIirLeast && x < kIirLeast ? 0.0 : x; }
HWY_INLINE double Widen(float x) { return static_cast<double>(x); }

template <class R>
constexpr double kLeastOutput = std::is_same_v<R, float> ? 0x1p-126 : kIirLeast;

template <class R>
HWY_INLINE R Narrow(double y) {
  return y > -kLeastOutput<R> && y < kLeastOutput<R> ? R{0} : static_cast<R>(y);
}

// Collects whether all numbers seen were finite.
class FiniteSoFar {
 public:
  HWY_INLINE FiniteSoFar() : sum_(hn::Zero(Samples::D())) {}
  HWY_INLINE void See(Samples::V v) { sum_ = hn::Add(sum_, hn::Sub(v, v)); }
  HWY_INLINE bool All() const { return hn::AllTrue(Samples::D(), hn::Eq(sum_, hn::Zero(Samples::D()))); }

 private:
  Samples::V sum_;
};

HWY_INLINE Samples::V WithoutLeast(Samples::V v) {
  return hn::IfThenZeroElse(hn::Lt(hn::Abs(v), hn::Set(Samples::D(), kIirLeast)), v);
}

// Takes eight samples; their parts go to x, x + stride.
template <std::size_t kParts, class R>
HWY_INLINE void TakeGroup(const R* src, double* x, std::size_t stride, FiniteSoFar& finite) {
  const Samples::D d;
  const hn::Rebind<R, Samples::D> narrow;
  const auto put = [&](auto loaded, double* to) PASSBAND_UNFOLD {
    Samples::V wide;
    if constexpr (std::is_same_v<R, double>) {
      wide = WithoutLeast(loaded);
    } else {
      wide = hn::PromoteTo(d, loaded);
    }
    finite.See(wide);
    hn::Store(wide, d, to);
  };
  for (std::size_t i = 0; i < kIirGroup; i += Samples::kLanes) {
    if constexpr (kParts == 1) {
      put(hn::LoadU(narrow, src + i), x + i);
    } else {
      hn::Vec<decltype(narrow)> re, im;
      hn::LoadInterleaved2(narrow, src + 2 * i, re, im);
      put(re, x + i);
      put(im, x + stride + i);
    }
  }
}

// Gives eight samples, whose parts are at y, y + stride.
template <std::size_t kParts, class R>
HWY_INLINE void GiveGroup(const double* y, std::size_t stride, R* dst) {
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128  // whose conversion stops at the largest float
  for (std::size_t part = 0; part < kParts; ++part) {
    for (std::size_t n = 0; n < kIirGroup; ++n) dst[kParts * n + part] = Narrow<R>(y[part * stride + n]);
  }
#else
  const Samples::D d;
  const hn::Rebind<R, Samples::D> narrow;
  const auto load = [&](const double* p) PASSBAND_UNFOLD {
    const auto v = hn::Load(d, p);
    const auto output = hn::IfThenZeroElse(hn::Lt(hn::Abs(v), hn::Set(d, kLeastOutput<R>)), v);
    if constexpr (std::is_same_v<R, double>) {
      return output;
    } else {
      return hn::DemoteTo(narrow, output);
    }
  };
  for (std::size_t i = 0; i < kIirGroup; i += Samples::kLanes) {
    if constexpr (kParts == 1) {
      hn::StoreU(load(y + i), narrow, dst + i);
    } else {
      hn::StoreInterleaved2(load(y + i), load(y + stride + i), narrow, dst + 2 * i);
    }
  }
#endif
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
