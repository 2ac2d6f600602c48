// Running medians of a long block in all lanes of a vector at once: the block is cut into as many stretches as there are
// lanes, and each lane walks over its own with its own sorted window. A step replaces the oldest sample of the window by
// the newest in one pass over the window, with no branch on the data.
#if defined(PASSBAND_PRIMITIVES_MEDIAN_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PASSBAND_PRIMITIVES_MEDIAN_LANES_INL_H_
#undef PASSBAND_PRIMITIVES_MEDIAN_LANES_INL_H_
#else
#define PASSBAND_PRIMITIVES_MEDIAN_LANES_INL_H_
#endif

#include <algorithm>
#include <cstddef>

#include "hwy/highway.h"
#include "passband/primitives/median_keys-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

template <class Key>
class LanesWalk {
  using D = Keys<Key>;
  using V = hn::Vec<D>;

 public:
  LanesWalk(const detail::MedianLanes<Key>& memory, std::size_t mask) : memory_(memory), mask_(mask) {}

  // Stretches of equal length; the last one ends with the block and may overlap the one before.
  static std::size_t StretchOf(std::size_t count) { return (count + hn::Lanes(D()) - 1) / hn::Lanes(D()); }

  // The medians of the windows that end at line[0] .. line[count - 1], count >= lanes.
  template <class R>
  void Run(const Key* line, R* y, std::size_t count) {
    const std::size_t stretch = StretchOf(count);
    const std::size_t last = count - stretch;
    Spread(line, stretch, last);
    Sort();
    for (std::size_t n = 0; n < stretch; ++n) Step(n);
    Collect(y, stretch, last);
  }

  // The sorted window after the last sample, and the distance of its keys.
  const Key* Window() const { return memory_.sorted + hn::Lanes(D()) - 1; }
  static std::size_t WindowStep() { return hn::Lanes(D()); }

 private:
  static Key* Row(Key* rows, std::size_t n) { return rows + n * hn::Lanes(D()); }

  // Row n of the columns is sample n - mask of each stretch.
  void Spread(const Key* line, std::size_t stretch, std::size_t last) {
    const std::size_t lanes = hn::Lanes(D());
    for (std::size_t l = 0; l < lanes; ++l) {
      const Key* const from = line + std::min(l * stretch, last) - mask_;
      Key* const to = memory_.columns + l;
      for (std::size_t n = 0; n < stretch + mask_; ++n) to[n * lanes] = from[n];
    }
  }

  // Straight insertion of the windows before the first step.
  void Sort() {
    const D d;
    for (std::size_t k = 0; k < mask_; ++k) {
      V carried = hn::Load(d, Row(memory_.columns, k));
      for (std::size_t i = 0; i < k; ++i) {
        const V held = hn::Load(d, Row(memory_.sorted, i));
        hn::Store(hn::Min(held, carried), d, Row(memory_.sorted, i));
        carried = hn::Max(held, carried);
      }
      hn::Store(carried, d, Row(memory_.sorted, k));
    }
  }

  // Leaving out the oldest key moves those from its place on down by one, d[k]; with the newest put in, the window is
  // max(d[k - 1], min(d[k], newest)).
  void Step(std::size_t n) {
    const D d;
    const V oldest = hn::Load(d, Row(memory_.columns, n));
    const V newest = hn::Load(d, Row(memory_.columns, n + mask_));
    V below = hn::Set(d, kLowest<Key>);
    V here = hn::Load(d, memory_.sorted);
    const auto replace = [&](std::size_t k, V above) HWY_ATTR {
      const V kept = hn::IfThenElse(hn::Lt(here, oldest), here, above);
      hn::Store(hn::Max(below, hn::Min(kept, newest)), d, Row(memory_.sorted, k));
      below = kept;
      here = above;
    };
#pragma GCC unroll 4
    for (std::size_t k = 0; k + 1 < mask_; ++k) replace(k, hn::Load(d, Row(memory_.sorted, k + 1)));
    replace(mask_ - 1, hn::Set(d, kHighest<Key>));
    hn::Store(hn::Load(d, Row(memory_.sorted, mask_ / 2)), d, Row(memory_.medians, n));
  }

  template <class R>
  void Collect(R* y, std::size_t stretch, std::size_t last) {
    const std::size_t lanes = hn::Lanes(D());
    for (std::size_t n = 0; n < stretch * lanes; n += lanes) {
      auto* const row = reinterpret_cast<R*>(memory_.medians + n);
      hn::Store(SamplesFrom<R>(D(), hn::Load(D(), memory_.medians + n)), hn::ScalableTag<R>(), row);
    }
    for (std::size_t l = 0; l < lanes; ++l) {
      const auto* const from = reinterpret_cast<const R*>(memory_.medians) + l;
      R* const to = y + std::min(l * stretch, last);
      for (std::size_t n = 0; n < stretch; ++n) to[n] = from[n * lanes];
    }
  }

  detail::MedianLanes<Key> memory_;
  std::size_t mask_;
};

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggled once per target
