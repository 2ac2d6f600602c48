#include "passband/primitives/window_multiply.h"

#include <cstddef>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/window_multiply.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

template <class T>
void Multiply(T* HWY_RESTRICT x, const RealOf<T>* HWY_RESTRICT w, std::size_t count) {
  using R = RealOf<T>;
  constexpr std::size_t kParts = sizeof(T) / sizeof(R);  // complex data lies as Re, Im, Re, Im, ...
  R* parts = reinterpret_cast<R*>(x);
  const hn::ScalableTag<R> d;
  const std::size_t lanes = hn::Lanes(d);
  const auto step = [&](std::size_t n) HWY_ATTR {
    const auto gain = hn::LoadU(d, w + n);
    if constexpr (IsComplex<T>) {
      hn::Vec<decltype(d)> re, im;
      hn::LoadInterleaved2(d, parts + 2 * n, re, im);
      hn::StoreInterleaved2(hn::Mul(re, gain), hn::Mul(im, gain), d, parts + 2 * n);
    } else {
      hn::StoreU(hn::Mul(hn::LoadU(d, parts + n), gain), d, parts + n);
    }
  };
  std::size_t n = 0;
  for (; n + 4 * lanes <= count; n += 4 * lanes) {
    for (std::size_t k = 0; k < 4; ++k) step(n + k * lanes);
  }
  for (; n + lanes <= count; n += lanes) step(n);
  for (; n < count; ++n) {
    for (std::size_t p = 0; p < kParts; ++p) parts[kParts * n + p] *= w[n];
  }
}

template <class T>
using Kernel = void (*)(T*, const RealOf<T>*, std::size_t);

const PerElement<Kernel>* Kernels() {
  static constexpr PerElement<Kernel> table{&Multiply<float>, &Multiply<double>, &Multiply<TSCplx>, &Multiply<TCplx>};
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
Status WindowMultiply(T* x, const RealOf<T>* w, std::int32_t count) noexcept {
  if (count < 0) return Status::BadSize;
  const auto& kernels = *HWY_DYNAMIC_DISPATCH(Kernels)();
  std::get<HWY_NAMESPACE::Kernel<T>>(kernels)(x, w, static_cast<std::size_t>(count));
  return Status::Ok;
}

template Status WindowMultiply(float*, const float*, std::int32_t) noexcept;
template Status WindowMultiply(double*, const double*, std::int32_t) noexcept;
template Status WindowMultiply(TSCplx*, const float*, std::int32_t) noexcept;
template Status WindowMultiply(TCplx*, const double*, std::int32_t) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
