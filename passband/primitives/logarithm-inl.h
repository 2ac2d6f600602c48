// Natural logarithms of vectors in two parts, exponent and mantissa, for one instruction set.
#if defined(PASSBAND_PRIMITIVES_LOGARITHM_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_LOGARITHM_INL_H_
#undef PASSBAND_PRIMITIVES_LOGARITHM_INL_H_
#else
#define PASSBAND_PRIMITIVES_LOGARITHM_INL_H_
#endif

#include <cstdint>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

/// x = m 2^k of positive numbers with full mantissas, m from sqrt(1/2) to sqrt 2.
template <class R>
HWY_INLINE void Split(hn::Vec<hn::ScalableTag<R>> x, hn::Vec<hn::ScalableTag<R>>& k, hn::Vec<hn::ScalableTag<R>>& m) {
  const hn::ScalableTag<R> d;
  const hn::RebindToSigned<decltype(d)> whole;
  using Int = hn::TFromD<decltype(whole)>;
  constexpr bool kSingle = sizeof(R) == 4;
  constexpr int kMantissaBits = kSingle ? 23 : 52;
  const auto sqrt_half = hn::Set(whole, static_cast<Int>(kSingle ? 0x3F3504F3 : 0x3FE6A09E667F3BCD));
  const auto bits = hn::BitCast(whole, x);
  const auto exponent = hn::ShiftRight<kMantissaBits>(hn::Sub(bits, sqrt_half));
  m = hn::BitCast(d, hn::Sub(bits, hn::ShiftLeft<kMantissaBits>(exponent)));
  // An integer as it stands in the last bits of a number whose unit is 1.
  const auto shift = hn::Set(d, static_cast<R>(kSingle ? 0x1.8p23 : 0x1.8p52));
  k = hn::Sub(hn::BitCast(d, hn::Add(exponent, hn::BitCast(whole, shift))), shift);
}

/// ln m of such m, to about one unit in the last place: 2 artanh s = 2 s (1 + s^2/3 + s^4/5 + ...), s = (m - 1) / (m + 1),
/// where s^2 < 0.03.
template <class R>
HWY_INLINE hn::Vec<hn::ScalableTag<R>> LogOfMantissa(hn::Vec<hn::ScalableTag<R>> m) {
  const hn::ScalableTag<R> d;
  constexpr int kTerms = sizeof(R) == 4 ? 4 : 10;
  const auto one = hn::Set(d, R(1));
  const auto s = hn::Div(hn::Sub(m, one), hn::Add(m, one));
  const auto z = hn::Mul(s, s);
  auto sum = hn::Set(d, R(2) / R(2 * kTerms + 1));
  HWY_UNROLL(10)
  for (int i = kTerms - 1; i >= 1; --i) sum = hn::MulAdd(sum, z, hn::Set(d, R(2) / static_cast<R>(2 * i + 1)));
  return hn::MulAdd(hn::Mul(s, z), sum, hn::Add(s, s));
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
