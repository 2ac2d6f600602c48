#include "passband/primitives/exponential_average.h"

#include <cstddef>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/exponential_average.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

// One number in a vector register.
using One = hn::CappedTag<double, 1>;
using OneVec = hn::Vec<One>;

template <class T>
void Average(T* x, std::size_t count, double weight, TCplx& last) {
  using R = RealOf<T>;
  constexpr std::size_t kParts = sizeof(T) / sizeof(R);
  const One d;
  R* const parts = reinterpret_cast<R*>(x);
  const OneVec a = hn::Set(d, weight);
  const OneVec b = hn::Set(d, 1 - weight);
  OneVec y[2] = {hn::Set(d, last.Re), hn::Set(d, last.Im)};
  for (std::size_t n = 0; n < count; ++n) {
    for (std::size_t p = 0; p < kParts; ++p) {
      R& part = parts[kParts * n + p];
      y[p] = hn::MulAdd(b, y[p], hn::Mul(a, hn::Set(d, static_cast<double>(part))));
      part = static_cast<R>(hn::GetLane(y[p]));
    }
  }
  last = {hn::GetLane(y[0]), hn::GetLane(y[1])};
}

template <class T>
using Kernel = void (*)(T*, std::size_t, double, TCplx&);

const PerElement<Kernel>* Kernels() {
  static constexpr PerElement<Kernel> table{&Average<float>, &Average<double>, &Average<TSCplx>, &Average<TCplx>};
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
void ExponentialAverage(T* x, std::int32_t count, double weight, TCplx& last) noexcept {
  const auto kernel = std::get<HWY_NAMESPACE::Kernel<T>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
  kernel(x, static_cast<std::size_t>(count), weight, last);
}

template void ExponentialAverage(float*, std::int32_t, double, TCplx&) noexcept;
template void ExponentialAverage(double*, std::int32_t, double, TCplx&) noexcept;
template void ExponentialAverage(TSCplx*, std::int32_t, double, TCplx&) noexcept;
template void ExponentialAverage(TCplx*, std::int32_t, double, TCplx&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
