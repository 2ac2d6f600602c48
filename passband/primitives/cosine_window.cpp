#include "passband/primitives/cosine_window.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/cosine_window.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef PASSBAND_PRIMITIVES_COSINE_WINDOW_ONCE
#define PASSBAND_PRIMITIVES_COSINE_WINDOW_ONCE
namespace passband::primitives {
namespace {

// What a kernel is called with, scalars only.
struct CosineArguments {
  double denominator;  // D
  double step_high;    // pi / D in two parts: together good to 100 bits
  double step_low;
  CosineWindowShape shape;
};

template <class T>
struct WindowKernels {
  void (*cosine)(T* x, std::size_t denominator, std::size_t count, const CosineArguments& arguments);
  void (*triangle)(T* x, std::size_t denominator);
};

// Coefficient of t^2k in sin(t)^2 = (1 - cos 2t) / 2; the factorials up to 20! are exact in a double.
constexpr double SineSquareCoefficient(int k) {
  double numerator = -0.5;
  double factorial = 1;
  for (int i = 1; i <= 2 * k; ++i) factorial *= i;
  for (int i = 0; i < k; ++i) numerator *= -4;
  return numerator / factorial;
}

}  // namespace
}  // namespace passband::primitives
#endif

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;
using Wide = hn::ScalableTag<double>;
using WideVec = hn::Vec<Wide>;

// sum of c[k] z^(k - kFirst), k = kFirst .. kFirst + kCount - 1, by halves: the chain of dependent operations is short.
template <int kFirst, int kCount>
HWY_INLINE WideVec SineSquareTerms(WideVec z, WideVec z2, WideVec z4) {
  const Wide d;
  if constexpr (kCount == 1) {
    return hn::Set(d, SineSquareCoefficient(kFirst));
  } else {
    constexpr int kLow = kCount > 4 ? 4 : (kCount > 2 ? 2 : 1);
    const auto power = kLow == 4 ? z4 : (kLow == 2 ? z2 : z);
    return hn::MulAdd(SineSquareTerms<kFirst + kLow, kCount - kLow>(z, z2, z4), power,
                      SineSquareTerms<kFirst, kLow>(z, z2, z4));
  }
}

// The window values for data with parts of type R, from their numbers n, 0 <= n <= D / 2.
template <class R>
class CosineShape {
 public:
  static constexpr bool kHasBlocks = true;

  explicit CosineShape(const CosineArguments& a)
      : half_(hn::Set(d_, a.denominator / 2)),
        high_(hn::Set(d_, a.step_high)),
        low_(hn::Set(d_, a.step_low)),
        c0_(hn::Set(d_, a.shape.c0)),
        c1_(hn::Set(d_, a.shape.c1)),
        c2_(hn::Set(d_, a.shape.c2)) {}

  HWY_INLINE WideVec operator()(WideVec n) const {
    const auto v = NearerSquare(n);
    return FromSquare(hn::IfThenElse(BeyondQuarter(n), hn::Sub(hn::Set(d_, 1), v), v));
  }

  // w from s = sin(pi n / D)^2.
  HWY_INLINE WideVec FromSquare(WideVec s) const { return hn::MulAdd(hn::MulAdd(c2_, s, c1_), s, c0_); }

  // Half the sine and half the cosine of 2 pi n / D.
  HWY_INLINE void HalfPhasor(WideVec n, WideVec& half_sine, WideVec& half_cosine) const {
    const auto v = NearerSquare(n);
    half_sine = hn::Sqrt(hn::Mul(v, hn::Sub(hn::Set(d_, 1), v)));
    const auto c = hn::Sub(hn::Set(d_, 0.5), v);
    half_cosine = hn::IfThenElse(BeyondQuarter(n), hn::Neg(c), c);
  }

 private:
  // The first term left out is below 1e-17 for t <= pi / 4; for single precision data 2e-15 does.
  static constexpr bool kDouble = sizeof(R) == sizeof(double);
  static constexpr int kTerms = kDouble ? 9 : 8;

  HWY_INLINE auto BeyondQuarter(WideVec n) const { return hn::Gt(n, hn::Sub(half_, n)); }

  // sin(t)^2 with t = pi m / D, m the distance of n to the nearer of 0 and D / 2. D / 2 - n is exact, so both quarters
  // are equally good: s is this or, beyond D / 4, 1 minus this.
  HWY_INLINE WideVec NearerSquare(WideVec n) const {
    const auto m = hn::Min(n, hn::Sub(half_, n));
    const auto t = kDouble ? hn::MulAdd(m, high_, hn::Mul(m, low_)) : hn::Mul(m, high_);
    const auto z = hn::Mul(t, t);
    const auto z2 = hn::Mul(z, z);
    const auto z4 = hn::Mul(z2, z2);
    return hn::MulAdd(z2, SineSquareTerms<2, kTerms>(z, z2, z4), z);
  }

  Wide d_;
  WideVec half_, high_, low_, c0_, c1_, c2_;
};

// 2 n / D, rounded once.
class TriangleShape {
 public:
  static constexpr bool kHasBlocks = false;

  explicit TriangleShape(double denominator) : denominator_(hn::Set(d_, denominator)) {}

  HWY_INLINE WideVec operator()(WideVec n) const { return hn::Div(hn::Add(n, n), denominator_); }

 private:
  Wide d_;
  WideVec denominator_;
};

// As many parts of type R as there are doubles in a vector.
template <class R>
using Parts = hn::Rebind<R, Wide>;

template <class R>
HWY_INLINE hn::Vec<Parts<R>> Rounded(WideVec w) {
  if constexpr (sizeof(R) == sizeof(double)) {
    return w;
  } else {
    return hn::DemoteTo(Parts<R>(), w);
  }
}

template <class T>
HWY_INLINE void MultiplyBy(T* x, hn::Vec<Parts<RealOf<T>>> gain) {
  const Parts<RealOf<T>> d;
  auto* parts = reinterpret_cast<RealOf<T>*>(x);
  if constexpr (IsComplex<T>) {
    hn::Vec<decltype(d)> re, im;
    hn::LoadInterleaved2(d, parts, re, im);
    hn::StoreInterleaved2(hn::Mul(re, gain), hn::Mul(im, gain), d, parts);
  } else {
    hn::StoreU(hn::Mul(hn::LoadU(d, parts), gain), d, parts);
  }
}

template <class T>
void MultiplyOne(T& x, double w) {
  x *= static_cast<RealOf<T>>(w);
}

// What a walk from both ends towards the middle has still to do: x[low .. high). x[low + k] and x[high - 1 - k] have
// the same window value, which is computed once.
template <class T>
struct Walk {
  T* x;
  std::size_t low;
  std::size_t high;
  std::size_t Left() const { return high - low; }
};

// A vector from each end at a time while there are `least` elements to do and low is at most `last`.
template <class T, class Shape>
void WalkVectors(Walk<T>& walk, const Shape& shape, std::size_t least, std::size_t last) {
  const Wide d;
  const std::size_t lanes = hn::Lanes(d);
  auto n = hn::Iota(d, static_cast<double>(walk.low));
  for (; walk.Left() >= least && walk.low <= last; walk.low += lanes, walk.high -= lanes) {
    const auto gain = Rounded<RealOf<T>>(shape(n));
    MultiplyBy(walk.x + walk.low, gain);
    MultiplyBy(walk.x + walk.high - lanes, hn::Reverse(Parts<RealOf<T>>(), gain));
    n = hn::Add(n, hn::Set(d, static_cast<double>(lanes)));
  }
}

// Blocks of kBlock elements from each end at a time. The phasors in a block are those at its start turned by the
// phasors 0 .. kBlock - 1, which are stored: s = 1/2 - 1/2 cos(a + b) costs two multiply-adds. Every start is computed
// on its own, so nothing drifts.
constexpr std::size_t kBlock = 64;

template <class T, class R>
void WalkBlocks(Walk<T>& walk, const CosineShape<R>& shape) {
  const Wide d;
  const std::size_t lanes = hn::Lanes(d);
  HWY_ALIGN double turn_sine[kBlock];
  HWY_ALIGN double turn_cosine[kBlock];
  WideVec sine, cosine;
  for (std::size_t j = 0; j < kBlock; j += lanes) {
    shape.HalfPhasor(hn::Iota(d, static_cast<double>(j)), sine, cosine);
    hn::Store(sine, d, turn_sine + j);
    hn::Store(cosine, d, turn_cosine + j);
  }
  HWY_ALIGN double start_sine[hn::MaxLanes(Wide())];
  HWY_ALIGN double start_cosine[hn::MaxLanes(Wide())];
  while (walk.Left() >= 2 * kBlock) {
    const auto starts = hn::MulAdd(hn::Iota(d, 0), hn::Set(d, kBlock), hn::Set(d, static_cast<double>(walk.low)));
    shape.HalfPhasor(starts, sine, cosine);  // of starts beyond the middle too, which are not used
    hn::Store(hn::Add(sine, sine), d, start_sine);
    hn::Store(hn::Add(cosine, cosine), d, start_cosine);
    for (std::size_t b = 0; b < lanes && walk.Left() >= 2 * kBlock; ++b) {
      const auto by_sine = hn::Set(d, start_sine[b]);
      const auto by_cosine = hn::Set(d, start_cosine[b]);
      for (std::size_t j = 0; j < kBlock; j += lanes, walk.low += lanes, walk.high -= lanes) {
        const auto rest = hn::NegMulAdd(by_cosine, hn::Load(d, turn_cosine + j), hn::Set(d, 0.5));
        const auto s = hn::MulAdd(by_sine, hn::Load(d, turn_sine + j), rest);
        const auto gain = Rounded<RealOf<T>>(shape.FromSquare(s));
        MultiplyBy(walk.x + walk.low, gain);
        MultiplyBy(walk.x + walk.high - lanes, hn::Reverse(Parts<RealOf<T>>(), gain));
      }
    }
  }
}

// Applies w[n] = w[D - n]. Which way a value is computed depends on n and D only, so the symmetry is exact.
template <class T, class Shape>
void Mirrored(T* x, std::size_t denominator, std::size_t count, const Shape& shape) {
  const Wide d;
  const std::size_t lanes = hn::Lanes(d);
  const double end = hn::GetLane(shape(hn::Zero(d)));
  MultiplyOne(x[0], end);
  if (count > denominator) MultiplyOne(x[denominator], end);

  Walk<T> walk{x, 1, denominator};
  if constexpr (Shape::kHasBlocks) {
    if (denominator >= 10 * kBlock) {  // the stored phasors pay
      // Next to the ends, where s is small, 1/2 - 1/2 cos would cancel; single precision notices only where s < 1e-8.
      WalkVectors(walk, shape, 2 * lanes, denominator / (sizeof(RealOf<T>) == sizeof(double) ? 32 : 2048));
      WalkBlocks(walk, shape);
    }
  }
  WalkVectors(walk, shape, 2 * lanes, denominator);
  HWY_ALIGN double rest[2 * hn::MaxLanes(Wide())];  // less than two vectors are left
  const auto mirror = hn::Set(d, static_cast<double>(denominator));
  for (std::size_t k = 0; k < walk.Left(); k += lanes) {
    const auto n = hn::Iota(d, static_cast<double>(walk.low + k));
    hn::Store(shape(hn::Min(n, hn::Sub(mirror, n))), d, rest + k);
  }
  for (std::size_t k = 0; k < walk.Left(); ++k) MultiplyOne(x[walk.low + k], rest[k]);
}

template <class T>
void Cosine(T* x, std::size_t denominator, std::size_t count, const CosineArguments& arguments) {
  Mirrored(x, denominator, count, CosineShape<RealOf<T>>(arguments));
}

template <class T>
void Triangle(T* x, std::size_t denominator) {
  Mirrored(x, denominator, denominator + 1, TriangleShape(static_cast<double>(denominator)));
}

template <class T>
constexpr WindowKernels<T> kKernels{&Cosine<T>, &Triangle<T>};

const PerElement<WindowKernels>* Kernels() {
  static constexpr PerElement<WindowKernels> table{kKernels<float>, kKernels<double>, kKernels<TSCplx>,
                                                   kKernels<TCplx>};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Kernels);
}  // namespace

template <Element T>
Status CosineWindow(T* x, std::int32_t count, const CosineWindowShape& shape, WindowPeriod period) noexcept {
  const std::int32_t denominator = period == WindowPeriod::Periodic ? count : count - 1;
  if (count == 0 && period == WindowPeriod::Periodic) return Status::Ok;
  if (count < 0 || denominator < 1) return Status::BadSize;
  constexpr double kPiLow = 1.2246467991473532e-16;  // pi minus its double
  const double d = denominator;
  const double high = std::numbers::pi / d;
  const double low = (std::fma(-high, d, std::numbers::pi) + kPiLow) / d;
  const auto& kernels = std::get<WindowKernels<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
  kernels.cosine(x, static_cast<std::size_t>(denominator), static_cast<std::size_t>(count), {d, high, low, shape});
  return Status::Ok;
}

template <Element T>
Status TriangleWindow(T* x, std::int32_t count) noexcept {
  if (count < 2) return Status::BadSize;
  const auto& kernels = std::get<WindowKernels<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
  kernels.triangle(x, static_cast<std::size_t>(count) - 1);
  return Status::Ok;
}

template Status CosineWindow(float*, std::int32_t, const CosineWindowShape&, WindowPeriod) noexcept;
template Status CosineWindow(double*, std::int32_t, const CosineWindowShape&, WindowPeriod) noexcept;
template Status CosineWindow(TSCplx*, std::int32_t, const CosineWindowShape&, WindowPeriod) noexcept;
template Status CosineWindow(TCplx*, std::int32_t, const CosineWindowShape&, WindowPeriod) noexcept;
template Status TriangleWindow(float*, std::int32_t) noexcept;
template Status TriangleWindow(double*, std::int32_t) noexcept;
template Status TriangleWindow(TSCplx*, std::int32_t) noexcept;
template Status TriangleWindow(TCplx*, std::int32_t) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
