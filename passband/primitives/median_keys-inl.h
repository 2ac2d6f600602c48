// Samples as integer keys in the order of the values, for one instruction set.
#if defined(PASSBAND_PRIMITIVES_MEDIAN_KEYS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_MEDIAN_KEYS_INL_H_
#undef PASSBAND_PRIMITIVES_MEDIAN_KEYS_INL_H_
#else
#define PASSBAND_PRIMITIVES_MEDIAN_KEYS_INL_H_
#endif

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>

#include "hwy/highway.h"
#include "passband/primitives/median_state_internal.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

// As many lanes of either type.
template <class Key>
using Keys = hn::ScalableTag<Key>;
template <class R>
using KeyOf = detail::MedianKey<R>;

// Beyond every key of a sample on either side.
template <class Key>
constexpr Key kLowest = std::numeric_limits<Key>::min();
template <class Key>
constexpr Key kHighest = std::numeric_limits<Key>::max();

// Negative numbers order backwards by their bits: all bits but the sign are turned over. This is its own inverse.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Turned(D d, V bits) {
  return hn::Xor(bits, hn::And(hn::BroadcastSignBit(bits), hn::Set(d, kHighest<hn::TFromD<D>>)));
}
template <class Key>
constexpr Key Turned(Key bits) {
  return bits < 0 ? bits ^ kHighest<Key> : bits;
}

template <class R>
HWY_INLINE R SampleFrom(KeyOf<R> key) {
  return std::bit_cast<R>(Turned(key));
}
// `d` is the tag of the keys.
template <class R, class D>
HWY_INLINE auto SamplesFrom(D d, hn::Vec<D> keys) {
  return hn::BitCast(hn::Rebind<R, D>(), Turned(d, keys));
}

template <class R>
void ToKeys(const R* x, KeyOf<R>* keys, std::size_t count) {
  constexpr R kNan = std::numeric_limits<R>::quiet_NaN();
  const hn::ScalableTag<R> d;
  const Keys<KeyOf<R>> dk;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t n = 0;
  for (; n + lanes <= count; n += lanes) {
    const auto v = hn::LoadU(d, x + n);
    const auto bits = hn::BitCast(dk, hn::IfThenElse(hn::Eq(v, v), v, hn::Set(d, kNan)));
    hn::StoreU(Turned(dk, bits), dk, keys + n);
  }
  for (; n < count; ++n) keys[n] = Turned(std::bit_cast<KeyOf<R>>(x[n] == x[n] ? x[n] : kNan));
}

// Writes the outputs n < count, of which keys(d, n) gives as many as `d` has lanes.
template <class R, class Source>
HWY_INLINE void ToSamples(R* y, std::size_t count, const Source& keys) {
  const Keys<KeyOf<R>> dk;
  const hn::ScalableTag<R> d;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t n = 0;
  for (; n + lanes <= count; n += lanes) hn::StoreU(SamplesFrom<R>(dk, keys(dk, n)), d, y + n);
  if (n == count) return;
  if (n + 1 == count) {  // reading back whole vectors right after one element of them was written would stall
    y[n] = SampleFrom<R>(hn::GetLane(keys(hn::CappedTag<KeyOf<R>, 1>(), n)));
    return;
  }
  HWY_ALIGN_MAX R rest[hn::MaxLanes(d)];
  hn::Store(SamplesFrom<R>(dk, keys(dk, n)), d, rest);
  std::copy(rest, rest + (count - n), y + n);
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggled once per target
