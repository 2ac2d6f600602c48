#include "passband/primitives/log_scale.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/log_scale.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/logarithm-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

// x = m 2^k with m from sqrt(1/2) to sqrt 2.
struct Parts {
  int k = 0;
  double m = 1;

  explicit Parts(double x) : m(std::frexp(x, &k)) {
    if (m < std::numbers::sqrt2 / 2) {
      m *= 2;
      k -= 1;
    }
  }
};

double One(double x, const LogScale& scale) {
  if (std::isnan(x)) return x;
  if (!(x > 0)) return scale.floor;
  if (std::isinf(x)) return x;
  const Parts of_x(x);
  const Parts of_reference(scale.reference);
  const double k = of_x.k - of_reference.k;
  const double y = k * scale.octave_high + (scale.slope * std::log(of_x.m / of_reference.m) + k * scale.octave_low);
  return y > scale.floor ? y : scale.floor;
}

template <class R>
class Scaler {
  using D = hn::ScalableTag<R>;
  using V = hn::Vec<D>;

 public:
  explicit HWY_INLINE Scaler(const LogScale& scale) : scale_(scale) {
    const Parts of_reference(scale.reference);
    const auto m = static_cast<R>(of_reference.m);
    // What the mantissa of the reference loses in R is taken off apart, so that a reference of R comes out as 0.
    const double lost = scale.slope * std::log(of_reference.m / static_cast<double>(m));
    reference_exponent_ = hn::Set(D(), static_cast<R>(of_reference.k));
    reference_log_ = LogOfMantissa<R>(hn::Set(D(), m));
    lost_ = hn::Set(D(), static_cast<R>(lost));
    slope_ = hn::Set(D(), static_cast<R>(scale.slope));
    octave_high_ = hn::Set(D(), static_cast<R>(scale.octave_high));
    octave_low_ = hn::Set(D(), static_cast<R>(scale.octave_low));
    floor_ = hn::Set(D(), static_cast<R>(scale.floor));
  }

  HWY_INLINE void Vector(R* x) const {
    const D d;
    const V samples = hn::LoadU(d, x);
    const V y = Logarithm(samples);
    const auto positive = hn::Gt(samples, hn::Zero(d));
    const V scaled = hn::IfThenElse(hn::And(positive, hn::Gt(y, floor_)), y, floor_);
    // NaN, infinities and what has no full mantissa are rare.
    const auto least = hn::Set(d, std::numeric_limits<R>::min());
    const auto largest = hn::Set(d, std::numeric_limits<R>::max());
    const auto ordinary = hn::And(hn::Ge(samples, least), hn::Le(samples, largest));
    if (HWY_LIKELY(hn::AllTrue(d, hn::Or(ordinary, hn::Le(samples, hn::Zero(d)))))) return hn::StoreU(scaled, d, x);
    for (std::size_t i = 0; i < hn::Lanes(d); ++i) x[i] = static_cast<R>(One(static_cast<double>(x[i]), scale_));
  }

 private:
  // slope ln(x / reference) of ordinary x; the share of the exponents is exact but for its last rounding.
  HWY_INLINE V Logarithm(V x) const {
    V k, m;
    Split<R>(x, k, m);
    const V exponent = hn::Sub(k, reference_exponent_);
    const V of_m = hn::MulSub(slope_, hn::Sub(LogOfMantissa<R>(m), reference_log_), lost_);
    return hn::MulAdd(exponent, octave_high_, hn::MulAdd(exponent, octave_low_, of_m));
  }

  LogScale scale_;
  V reference_exponent_;
  V reference_log_;
  V lost_;
  V slope_;
  V octave_high_;
  V octave_low_;
  V floor_;
};

template <class R>
void Scale(R* x, std::size_t count, const LogScale& scale) {
  const hn::ScalableTag<R> d;
  const Scaler<R> scaler(scale);
  std::size_t n = 0;
  for (; n + hn::Lanes(d) <= count; n += hn::Lanes(d)) scaler.Vector(x + n);
  if (n == count) return;
  R rest[hn::MaxLanes(d)] = {};
  std::copy(x + n, x + count, rest);
  scaler.Vector(rest);
  std::copy(rest, rest + (count - n), x + n);
}

template <class R>
using Kernel = void (*)(R*, std::size_t, const LogScale&);
using Table = std::tuple<Kernel<float>, Kernel<double>>;

const Table* Kernels() {
  static constexpr Table table{&Scale<float>, &Scale<double>};
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

template <RealElement R>
Status ToLogScale(R* x, std::int32_t count, const LogScale& scale) noexcept {
  if (count < 0) return Status::BadSize;
  if (count > 0 && x == nullptr) return Status::NullPointer;
  const auto kernel = std::get<HWY_NAMESPACE::Kernel<R>>(*HWY_DYNAMIC_DISPATCH(Kernels)());
  kernel(x, static_cast<std::size_t>(count), scale);
  return Status::Ok;
}

template Status ToLogScale(float*, std::int32_t, const LogScale&) noexcept;
template Status ToLogScale(double*, std::int32_t, const LogScale&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
