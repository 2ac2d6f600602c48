#include "passband/primitives/goertzel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>

#include "passband/foundation/scalars.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/goertzel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

// exp(-2 pi j f n) for whole n; the product is reduced to an eighth of a turn before it is rounded.
TCplx Rotation(double f, double n) {
  const double product = f * n;
  const double rest = std::fma(f, n, -product);
  const double quarters = std::nearbyint(4 * product);
  const double angle = 2 * PI * ((product - quarters / 4) + rest);
  const double c = std::cos(angle);
  const double s = -std::sin(angle);
  switch (static_cast<int>(std::fmod(quarters, 4)) & 3) {
    case 0:
      return {c, s};
    case 1:
      return {s, -c};
    case 2:
      return {-c, -s};
    default:
      return {-s, c};
  }
}

constexpr std::size_t kBlock = 8192;  // values: parts of samples

// Chains of Horner's scheme: lane l of vector v sums the values at v lanes + l of every group of `kVectors` vectors.
template <class R, std::size_t kParts, std::size_t kVectors>
class Chains {
  using D = hn::ScalableTag<R>;
  using V = hn::Vec<D>;

 public:
  static constexpr bool kFolds = hn::MaxLanes(D()) >= kParts;  // not on processors without vectors

  static std::size_t Width() { return kVectors * hn::Lanes(D()); }
  // The values that the sums are of.
  static std::size_t Sums() { return kFolds ? hn::Lanes(D()) : Width(); }

  // x holds `count` values, a last group that is not full counts as filled up with zeros. `by_group` and `by_vector` are
  // the rotations by a group and by a vector. The sums of the lanes go to re and im.
  HWY_INLINE static void Sum(const R* HWY_RESTRICT x, std::size_t count, TCplx by_group, TCplx by_vector,
                             R* HWY_RESTRICT re, R* HWY_RESTRICT im) {
    const D d;
    const std::size_t width = Width();
    const V c = hn::Set(d, static_cast<R>(by_group.Re));
    const V s = hn::Set(d, static_cast<R>(by_group.Im));
    V a[kVectors];
    V b[kVectors];
    HWY_ALIGN_MAX R last[kVectors * hn::MaxLanes(D())] = {};
    const std::size_t whole = count / width * width;
    std::copy(x + whole, x + count, last);
    for (std::size_t v = 0; v < kVectors; ++v) {
      a[v] = hn::Load(d, last + v * hn::Lanes(d));
      b[v] = hn::Zero(d);
    }
    for (std::size_t n = whole; n >= width; n -= width) {
      const R* const group = x + n - width;
#pragma GCC unroll 8
      for (std::size_t v = 0; v < kVectors; ++v) {
        const V old = a[v];
        a[v] = hn::NegMulAdd(b[v], s, hn::MulAdd(old, c, hn::LoadU(d, group + v * hn::Lanes(d))));
        b[v] = hn::MulAdd(b[v], c, hn::Mul(old, s));
      }
    }
    // Vectors that hold whole samples are put together.
    const V cv = hn::Set(d, static_cast<R>(by_vector.Re));
    const V sv = hn::Set(d, static_cast<R>(by_vector.Im));
    for (std::size_t v = kVectors - 1; kFolds && v > 0; --v) {
      a[v - 1] = hn::Add(a[v - 1], hn::NegMulAdd(b[v], sv, hn::Mul(a[v], cv)));
      b[v - 1] = hn::Add(b[v - 1], hn::MulAdd(b[v], cv, hn::Mul(a[v], sv)));
    }
    for (std::size_t v = 0; v < (kFolds ? 1 : kVectors); ++v) {
      hn::Store(a[v], d, re + v * hn::Lanes(d));
      hn::Store(b[v], d, im + v * hn::Lanes(d));
    }
  }
};

// The sum over one block of values, kParts of each sample.
template <class R, std::size_t kParts, std::size_t kVectors>
TCplx SumBlock(const R* x, std::size_t count, double f) {
  using Chain = Chains<R, kParts, kVectors>;
  using D = hn::ScalableTag<R>;
  HWY_ALIGN_MAX R re[kVectors * hn::MaxLanes(D())];
  HWY_ALIGN_MAX R im[kVectors * hn::MaxLanes(D())];
  const auto turn_by = [f](std::size_t values) { return Rotation(f, static_cast<double>(values) / kParts); };
  Chain::Sum(x, count, turn_by(Chain::Width()), turn_by(hn::Lanes(D())), re, im);
  // Horner's scheme once more, over the samples that are left.
  const TCplx turn = Rotation(f, 1);
  TCplx sum{};
  for (std::size_t n = Chain::Sums(); n >= kParts; n -= kParts) {
    const std::size_t at = n - kParts;
    TCplx z{static_cast<double>(re[at]), static_cast<double>(im[at])};
    if constexpr (kParts == 2) {  // the chain of the imaginary parts, times j
      z = {z.Re - static_cast<double>(im[at + 1]), z.Im + static_cast<double>(re[at + 1])};
    }
    sum = {sum.Re * turn.Re - sum.Im * turn.Im + z.Re, sum.Re * turn.Im + sum.Im * turn.Re + z.Im};
  }
  return sum;
}

template <class T>
TCplx SumAll(const T* src, std::size_t count, double f) {
  using R = RealOf<T>;
  constexpr std::size_t kParts = sizeof(T) / sizeof(R);
  constexpr std::size_t kSamples = kBlock / kParts;
  const R* const x = reinterpret_cast<const R*>(src);
  TCplx total{};
  for (std::size_t n = 0; n < count; n += kSamples) {
    const std::size_t values = kParts * std::min(kSamples, count - n);
    const TCplx sum = values <= 512 ? SumBlock<R, kParts, 2>(x + kParts * n, values, f)
                                    : SumBlock<R, kParts, 8>(x + kParts * n, values, f);
    total = total + (n == 0 ? sum : sum * Rotation(f, static_cast<double>(n)));
  }
  return total;
}

template <class T>
using Kernel = TCplx (*)(const T*, std::size_t, double);

const PerElement<Kernel>* Kernels() {
  static constexpr PerElement<Kernel> table{&SumAll<float>, &SumAll<double>, &SumAll<TSCplx>, &SumAll<TCplx>};
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
Status Goertzel(const T* src, std::int32_t count, double frequency, TCplx& value) noexcept {
  if (count < 0) return Status::BadSize;
  if (count > 0 && src == nullptr) return Status::NullPointer;
  const auto kernel = std::get<HWY_NAMESPACE::Kernel<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
  value = kernel(src, static_cast<std::size_t>(count), frequency);
  return Status::Ok;
}

template Status Goertzel(const float*, std::int32_t, double, TCplx&) noexcept;
template Status Goertzel(const double*, std::int32_t, double, TCplx&) noexcept;
template Status Goertzel(const TSCplx*, std::int32_t, double, TCplx&) noexcept;
template Status Goertzel(const TCplx*, std::int32_t, double, TCplx&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
