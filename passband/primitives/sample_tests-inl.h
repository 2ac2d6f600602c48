// Tests of real samples, a vector of them at a time, for one instruction set.
#if defined(PASSBAND_PRIMITIVES_SAMPLE_TESTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_SAMPLE_TESTS_INL_H_
#undef PASSBAND_PRIMITIVES_SAMPLE_TESTS_INL_H_
#else
#define PASSBAND_PRIMITIVES_SAMPLE_TESTS_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "hwy/highway.h"
#include "passband/primitives/search.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

template <class R>
using Tag = hn::ScalableTag<R>;
template <class R>
using MaskOf = hn::Mask<Tag<R>>;

// Lane i of a mask as bit i.
template <class R>
HWY_INLINE std::uint64_t Bits(MaskOf<R> mask) {
  std::uint8_t bytes[8] = {};
  hn::StoreMaskBits(Tag<R>(), mask, bytes);
  std::uint64_t bits = 0;
  std::memcpy(&bits, bytes, sizeof(bits));
  return bits;
}

// Tests of the samples from an address on: of as many as a vector has, or of the one there.
template <class R, Relation kRelation>
struct ToLevel {
  R level;

  HWY_INLINE MaskOf<R> Many(const R* x) const {
    const Tag<R> d;
    const auto v = hn::LoadU(d, x);
    const auto edge = hn::Set(d, level);
    if constexpr (kRelation == Relation::Below) return hn::Lt(v, edge);
    if constexpr (kRelation == Relation::AtMost) return hn::Le(v, edge);
    if constexpr (kRelation == Relation::AtLeast) return hn::Ge(v, edge);
    if constexpr (kRelation == Relation::Above) return hn::Gt(v, edge);
  }
  bool One(const R* x) const {
    if constexpr (kRelation == Relation::Below) return *x < level;
    if constexpr (kRelation == Relation::AtMost) return *x <= level;
    if constexpr (kRelation == Relation::AtLeast) return *x >= level;
    if constexpr (kRelation == Relation::Above) return *x > level;
  }
};

// Of steps to the next sample.
template <class R, bool kRising>
struct Step {
  HWY_INLINE MaskOf<R> Many(const R* x) const {
    const Tag<R> d;
    const auto here = hn::LoadU(d, x);
    const auto next = hn::LoadU(d, x + 1);
    return kRising ? hn::Lt(here, next) : hn::Lt(next, here);
  }
  bool One(const R* x) const { return kRising ? x[0] < x[1] : x[1] < x[0]; }
};

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
