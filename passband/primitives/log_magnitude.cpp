#include "passband/primitives/log_magnitude.h"

#include <cmath>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/log_magnitude.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/logarithm-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
double One(TCplx z) {
  const double log = std::log(CAbs(z));
  return std::isfinite(log) ? log : 0;
}

void Logarithms(const TCplx* z, std::size_t count, double* log) {
  const hn::ScalableTag<double> d;
  const auto half = hn::Set(d, 0.5);
  const auto octave_high = hn::Set(d, 0x1.62e42fep-2);  // ln 2 / 2; its products with exponents are exact
  const auto octave_low = hn::Set(d, 0x1.f473de6af278fp-31);
  const auto least = hn::Set(d, 1e-290);
  const auto largest = hn::Set(d, 1e290);
  std::size_t n = 0;
  for (; n + hn::Lanes(d) <= count; n += hn::Lanes(d)) {
    hn::Vec<decltype(d)> re, im;
    hn::LoadInterleaved2(d, reinterpret_cast<const double*>(z + n), re, im);
    const auto power = hn::MulAdd(re, re, hn::Mul(im, im));
    hn::Vec<decltype(d)> k, m;
    Split<double>(power, k, m);
    const auto of_m = hn::MulAdd(half, LogOfMantissa<double>(m), hn::Mul(k, octave_low));
    hn::StoreU(hn::MulAdd(k, octave_high, of_m), d, log + n);
    // Squares that leave the range, and what has no logarithm, are rare.
    if (!hn::AllTrue(d, hn::And(hn::Gt(power, least), hn::Lt(power, largest)))) {
      for (std::size_t i = n; i < n + hn::Lanes(d); ++i) log[i] = One(z[i]);
    }
  }
  for (; n < count; ++n) log[n] = One(z[n]);
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {
HWY_EXPORT(Logarithms);
}  // namespace

Status LogMagnitude(const TCplx* z, std::int32_t count, double* log) noexcept {
  if (count < 0) return Status::BadSize;
  if (count > 0 && (z == nullptr || log == nullptr)) return Status::NullPointer;
  HWY_DYNAMIC_DISPATCH(Logarithms)(z, static_cast<std::size_t>(count), log);
  return Status::Ok;
}

}  // namespace passband::primitives
#endif  // HWY_ONCE
